#pragma once

#include "Platform/Simulated/Scenario/JsonObjectReader.h"
#include "Platform/Simulated/Scenario/Scenario.h"

#include <filesystem>

namespace Platform::Simulated {

/// Reads the description of a camera's hardware. Relative paths start at the folder.
CameraDefinition readCamera(const JsonPlace& json, const std::filesystem::path& folder);

} // namespace Platform::Simulated
