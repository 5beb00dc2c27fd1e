#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace Halden::System {

/// The types of values, with the numbers of the registry. A file may hold others by number.
enum class RegistryType : std::uint32_t {
    None = 0,
    String = 1,
    Binary = 3,
    Dword = 4, ///< 32 bits, low byte first
};

struct RegistryValue {
    RegistryType type = RegistryType::None;
    std::vector<std::uint8_t> data; ///< a string's data is its UTF-8 text here
};

/// Reads what stands behind the "=" of a value's line: "text", dword:, hex: or hex(type):, with or without a
/// comment behind it. Nothing for any other text.
std::optional<RegistryValue> parseRegistryValue(std::string_view text);

} // namespace Halden::System
