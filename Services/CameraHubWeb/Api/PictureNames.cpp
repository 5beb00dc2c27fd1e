#include "Services/CameraHubWeb/Api/PictureNames.h"

#include <algorithm>

namespace CameraHubWeb {

PictureName splitName(std::string_view name) {
    const auto point = std::min(name.rfind('.'), name.size());
    return {name.substr(0, point), name.substr(point)};
}

std::string withEnding(const std::string& fileName, const char* ending) {
    return fileName.substr(0, fileName.rfind('.')) + ending;
}

std::string tagOf(const KeptStill& still, const PictureOptions& options) {
    return still.id + "-w" + std::to_string(options.width.value_or(0)) + "-q" + std::to_string(options.quality);
}

} // namespace CameraHubWeb
