#pragma once

#include "Platform/Interface/CameraPlatform.h"

#include <filesystem>
#include <memory>

namespace Platform::Simulated {

/// A platform whose cameras the scenario file describes; without a file, an empty path, there is one built-in
/// camera. Follows the file as it changes. Raises winrt::hresult_error, whose text names the file and the
/// member at fault, if the file is missing, is no JSON or is no scenario. Any thread. An event handler of its own
/// may release it.
std::shared_ptr<CameraPlatform> createSimulatedPlatform(const std::filesystem::path& scenarioFile);

} // namespace Platform::Simulated
