#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace Platform::Simulated {

/// In bytes; each leaves ample room for what is written by hand, or taken by a camera.
inline constexpr std::size_t longestScenario = 16UL * 1024 * 1024;
inline constexpr std::size_t longestPicture = 512UL * 1024 * 1024;

/// All bytes of a regular file. Raises winrt::hresult_error for one that is longer, for what is none, and for what the
/// system reports.
std::string readFileText(const std::filesystem::path& file, std::size_t mostBytes);

} // namespace Platform::Simulated
