#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Platform {

/// A 128-bit identifier in the platform's four fields; all 0 by default. Any thread.
struct Guid {
    std::uint32_t Data1 = 0;                ///< The first group of the text, in the processor's order of bytes.
    std::uint16_t Data2 = 0;                ///< The second group, likewise.
    std::uint16_t Data3 = 0;                ///< The third group, likewise; its first digit is the version.
    std::array<std::uint8_t, 8> Data4 = {}; ///< The last two groups of the text, in its order; the variant leads.

    /// Bit by bit: the case of a text that was read makes no difference.
    bool operator==(const Guid&) const = default;
};

/// The identifier as text, 38 characters: lower-case hexadecimal digits in five groups, in braces. ASCII.
std::string guidToText(const Guid& guid);

/// Reads the same text, with digits of either case. None for any other.
std::optional<Guid> guidFromText(std::string_view text);

namespace GuidHelper {

/// A new random identifier: version 4, variant 1 (RFC 4122, section 4.4), from the system's source of chance
/// where it has one. Any thread.
Guid CreateNewGuid();

} // namespace GuidHelper
} // namespace Platform
