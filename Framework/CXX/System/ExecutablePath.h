#pragma once

#include <filesystem>

namespace Platform::Linux {

/// The file that this process runs; empty if the system does not tell.
std::filesystem::path executablePath();

} // namespace Platform::Linux
