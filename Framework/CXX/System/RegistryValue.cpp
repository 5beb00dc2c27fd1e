#include "Framework/CXX/System/RegistryValue.h"

#include "Framework/CXX/System/RegistryText.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace Halden::System {

namespace {

// The whole text as a hexadecimal number of at most that many digits.
std::optional<std::uint32_t> hexNumber(std::string_view text, std::size_t digits) {
    std::uint32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number, 16);
    if (text.empty() || text.size() > digits || error != std::errc() || stop != end)
        return std::nullopt;
    return number;
}

std::string_view withoutComment(std::string_view text) { return trimmed(text.substr(0, text.find(';'))); }

std::optional<RegistryValue> parseString(std::string_view text) {
    const std::optional<std::string> content = takeQuoted(text);
    if (!content || !withoutComment(text).empty())
        return std::nullopt;
    return RegistryValue{RegistryType::String, {content->begin(), content->end()}};
}

std::optional<RegistryValue> parseDword(std::string_view text) {
    constexpr int bitsAByte = 8;
    const std::optional<std::uint32_t> number = hexNumber(withoutComment(text), 8);
    if (!number)
        return std::nullopt;
    RegistryValue value{RegistryType::Dword, {}};
    for (std::uint32_t i = 0; i < sizeof(*number); ++i)
        value.data.push_back(static_cast<std::uint8_t>(*number >> (i * bitsAByte)));
    return value;
}

// Bytes of one or two digits with commas between; one comma may stand behind the last.
std::optional<RegistryValue> parseBytes(RegistryType type, std::string_view text) {
    RegistryValue value{type, {}};
    std::string_view rest = withoutComment(text);
    while (!rest.empty()) {
        const std::size_t comma = std::min(rest.find(','), rest.size());
        const std::optional<std::uint32_t> byte = hexNumber(trimmed(rest.substr(0, comma)), 2);
        if (!byte)
            return std::nullopt;
        value.data.push_back(static_cast<std::uint8_t>(*byte));
        rest = trimmed(rest.substr(std::min(comma + 1, rest.size())));
    }
    return value;
}

std::optional<RegistryValue> parseBytesWithType(std::string_view text) {
    const std::size_t end = text.find("):");
    if (end == std::string_view::npos)
        return std::nullopt;
    const std::optional<std::uint32_t> type = hexNumber(text.substr(0, end), 8);
    return type ? parseBytes(static_cast<RegistryType>(*type), text.substr(end + 2)) : std::nullopt;
}

} // namespace

std::optional<RegistryValue> parseRegistryValue(std::string_view text) {
    constexpr std::string_view dword = "dword:";
    constexpr std::string_view hex = "hex:";
    constexpr std::string_view hexWithType = "hex(";
    const std::string kind = lowered(text.substr(0, dword.size()));
    if (kind.starts_with('"'))
        return parseString(text);
    if (kind.starts_with(dword))
        return parseDword(text.substr(dword.size()));
    if (kind.starts_with(hex))
        return parseBytes(RegistryType::Binary, text.substr(hex.size()));
    if (kind.starts_with(hexWithType))
        return parseBytesWithType(text.substr(hexWithType.size()));
    return std::nullopt;
}

} // namespace Halden::System
