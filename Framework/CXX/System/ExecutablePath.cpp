#include "Framework/CXX/System/ExecutablePath.h"

#include <system_error>

namespace Platform::Linux {

std::filesystem::path executablePath() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

} // namespace Platform::Linux
