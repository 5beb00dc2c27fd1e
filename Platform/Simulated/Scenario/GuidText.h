#pragma once

#include "Platform/Interface/Guid.h"

#include <optional>
#include <string_view>

namespace Platform::Simulated {

/// Reads 38 characters: hexadecimal digits of either case in five groups, in braces. None for any
/// other text.
std::optional<Guid> guidFromText(std::u16string_view text);

/// True for texts that differ in the case of ASCII letters at most.
bool equalIgnoringCase(std::u16string_view left, std::u16string_view right);

} // namespace Platform::Simulated
