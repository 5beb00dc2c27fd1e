#pragma once

#include <filesystem>

namespace Halden::System {

/// The file that this process runs; empty if the system does not tell.
std::filesystem::path executablePath();

} // namespace Halden::System
