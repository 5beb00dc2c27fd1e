#include "Services/CameraHubWeb/Page/PageFiles.h"

#include <algorithm>

namespace CameraHubWeb {

const PageFile* findPageFile(std::string_view name) {
    const std::span<const PageFile> files = pageFiles();
    const auto found = std::ranges::lower_bound(files, name, {}, &PageFile::name);
    return found != files.end() && found->name == name ? &*found : nullptr;
}

} // namespace CameraHubWeb
