#include "Framework/CXX/Diagnostics/FileSystem.h"

#include "Framework/CXX/Common/TextConversion.h"

#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace {

constexpr mode_t everyPermission = 0777; // the process's mask takes off what it must not have

// The library's text has the path in brackets: the quotes come with the operation.
[[noreturn]] void throwError(const std::string& operation, int error, const std::string& path) {
    throw std::filesystem::filesystem_error(operation + " \"" + path + '"', path,
                                            std::error_code(error, std::generic_category()));
}

} // namespace

bool FileSystem::create_directory(const std::u16string& path) const {
    constexpr const char* operation = "create_directory";
    const std::string name = Halden::toUtf8(path);
    if (mkdir(name.c_str(), everyPermission) == 0)
        return true;
    if (errno != EEXIST)
        throwError(operation, errno, name);
    struct stat attributes{};
    if (stat(name.c_str(), &attributes) != 0)
        throwError(operation, errno, name);
    if (!S_ISDIR(attributes.st_mode))
        throwError(operation, EEXIST, name);
    return false;
}

bool FileSystem::exists(const std::u16string& path) const {
    const std::string name = Halden::toUtf8(path);
    struct stat attributes{};
    if (lstat(name.c_str(), &attributes) == 0)
        return true;
    if (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG)
        return false;
    throwError("exists", errno, name);
}

const FileSystem& defaultFileSystem() {
    static constexpr FileSystem fileSystem;
    return fileSystem;
}
