#pragma once

#include <filesystem>
#include <string>

namespace Platform::Simulated {

/// All bytes of a file. Raises what the system reports as winrt::hresult_error.
std::string readFileText(const std::filesystem::path& file);

} // namespace Platform::Simulated
