#include "Framework/CXX/Diagnostics/FileSystem.h"

#include "Framework/CXX/Diagnostics/PathText.h"

#include <filesystem>
#include <system_error>
#include <tuple>

namespace {

namespace fs = std::filesystem;

// The library's text has the path in brackets: the quotes come with the operation.
[[noreturn]] void throwError(const std::string& operation, const fs::path& path, std::error_code error) {
    throw fs::filesystem_error(operation + " \"" + path.native() + '"', path, error);
}

} // namespace

bool FileSystem::create_directory(const std::u16string& path) const {
    const fs::path folder = Halden::toPath(path);
    std::error_code error;
    const bool made = fs::create_directory(folder, error);
    if (error == std::errc::file_exists) { // no folder; if that can't be told, the reason is the error
        std::error_code unreadable;
        std::ignore = fs::status(folder, unreadable);
        if (unreadable)
            error = unreadable;
    }
    if (error)
        throwError("create_directory", folder, error);
    return made;
}

bool FileSystem::exists(const std::u16string& path) const {
    const fs::path name = Halden::toPath(path);
    std::error_code error;
    const fs::file_status status = fs::symlink_status(name, error);
    if (!fs::status_known(status) && error != std::errc::filename_too_long)
        throwError("exists", name, error);
    return fs::exists(status);
}

const FileSystem& defaultFileSystem() {
    static constexpr FileSystem fileSystem;
    return fileSystem;
}
