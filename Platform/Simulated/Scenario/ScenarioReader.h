#pragma once

#include "Platform/Simulated/Scenario/Scenario.h"

#include <filesystem>
#include <string>

namespace Platform::Simulated {

/// Reads the text of a scenario. `file`, absolute, is what relative paths start beside and what error
/// texts name. Raises winrt::hresult_error, with the file and the member at fault, for a text that is
/// no JSON or breaks the contract of scenarios. Any thread.
Scenario readScenario(const std::string& text, const std::filesystem::path& file);

/// The one camera that there is without a scenario file.
Scenario builtInScenario();

} // namespace Platform::Simulated
