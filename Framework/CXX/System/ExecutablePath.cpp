#include "Framework/CXX/System/ExecutablePath.h"

#include <system_error>

namespace Halden::System {

std::filesystem::path executablePath() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

} // namespace Halden::System
