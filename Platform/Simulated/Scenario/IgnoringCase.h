#pragma once

#include <string_view>

namespace Platform::Simulated {

/// True for texts that differ in the case of ASCII letters at most.
bool equalIgnoringCase(std::u16string_view left, std::u16string_view right);

} // namespace Platform::Simulated
