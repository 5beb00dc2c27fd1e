#include "Framework/CXX/Diagnostics/PathText.h"

#include "Framework/CXX/Common/TextConversion.h"

#include <sys/stat.h>
#include <unistd.h>

namespace Halden {

std::u16string joinPaths(std::u16string_view left, std::u16string_view right) {
    std::u16string path(left);
    if (right.starts_with(u'/'))
        path.clear();
    else if (!path.empty() && !path.ends_with(u'/'))
        path += u'/';
    return path.append(right);
}

bool isFolder(const std::u16string& path) {
    struct stat attributes{};
    return stat(toUtf8(path).c_str(), &attributes) == 0 && S_ISDIR(attributes.st_mode);
}

bool pathExists(const std::string& path) { return access(path.c_str(), F_OK) == 0; }

bool pathExists(const std::u16string& path) { return pathExists(toUtf8(path)); }

std::u16string withoutBlanks(std::u16string_view text) {
    std::u16string rest(text);
    std::erase(rest, u' ');
    return rest;
}

std::string withoutBlanks(std::string_view text) {
    std::string rest(text);
    std::erase(rest, ' ');
    return rest;
}

} // namespace Halden
