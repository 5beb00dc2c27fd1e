#include "Framework/CXX/Diagnostics/LogDestination.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace Halden {

namespace {

// null, full and their like, which never keep anybody waiting
bool isMemoryDevice(const struct stat& status) {
    constexpr unsigned memory = 1; // the kernel's number for them
    return S_ISCHR(status.st_mode) && major(status.st_rdev) == memory;
}

bool isStream(const struct stat& status, int stream) {
    struct stat other{};
    return fstat(stream, &other) == 0 && other.st_dev == status.st_dev && other.st_ino == status.st_ino;
}

// A pipe that nobody reads any more would be waited for.
bool opensAtOnce(const std::filesystem::path& file) {
    const int descriptor = open(file.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    close(descriptor);
    return true;
}

} // namespace

bool mayBeLogFile(const std::filesystem::path& file) {
    struct stat status{};
    if (stat(file.c_str(), &status) != 0)
        return true;
    if (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode) || isMemoryDevice(status))
        return true;
    return (isStream(status, STDOUT_FILENO) || isStream(status, STDERR_FILENO)) && opensAtOnce(file);
}

} // namespace Halden
