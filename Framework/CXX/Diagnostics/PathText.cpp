#include "Framework/CXX/Diagnostics/PathText.h"

#include "Framework/CXX/Common/TextConversion.h"

#include <system_error>

namespace Halden {

std::filesystem::path toPath(std::u16string_view text) { return toUtf8(text); }

std::u16string joinPaths(std::u16string_view left, std::u16string_view right) {
    return toUtf16((toPath(left) / toPath(right)).native());
}

bool isFolder(std::u16string_view path) {
    std::error_code ignored;
    return std::filesystem::is_directory(toPath(path), ignored);
}

bool pathExists(std::u16string_view path) {
    std::error_code ignored;
    return std::filesystem::exists(toPath(path), ignored);
}

std::u16string withoutBlanks(std::u16string text) {
    std::erase(text, u' ');
    return text;
}

std::string withoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

} // namespace Halden
