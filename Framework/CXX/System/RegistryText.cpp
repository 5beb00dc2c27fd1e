#include "Framework/CXX/System/RegistryText.h"

#include "Framework/CXX/Common/TextConversion.h"

#include <algorithm>

namespace Halden::System {

namespace {

std::u16string decodeUtf16(std::string_view bytes, bool lowByteFirst) {
    std::u16string text;
    text.reserve(bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        text += static_cast<char16_t>(lowByteFirst ? first | second << 8 : first << 8 | second);
    }
    return text;
}

// Ends in LF or CR LF; the last line may have neither.
template <typename Text> std::vector<Text> splitLines(Text text) {
    std::vector<Text> lines;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        Text line = text.substr(0, end);
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        lines.push_back(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::vector<std::string> linesOfUtf16(std::string_view bytes, bool lowByteFirst) {
    const std::u16string text = decodeUtf16(bytes, lowByteFirst);
    std::vector<std::string> lines;
    for (const std::u16string_view line : splitLines(std::u16string_view(text)))
        lines.push_back(Halden::toUtf8(line));
    return lines;
}

} // namespace

std::vector<std::string> registryLines(std::string_view bytes) {
    constexpr std::string_view utf16LowFirst = "\xFF\xFE";
    constexpr std::string_view utf16HighFirst = "\xFE\xFF";
    constexpr std::string_view utf8 = "\xEF\xBB\xBF";
    if (bytes.starts_with(utf16LowFirst))
        return linesOfUtf16(bytes.substr(utf16LowFirst.size()), true);
    if (bytes.starts_with(utf16HighFirst))
        return linesOfUtf16(bytes.substr(utf16HighFirst.size()), false);
    if (bytes.starts_with(utf8))
        bytes.remove_prefix(utf8.size());
    const std::vector<std::string_view> lines = splitLines(bytes);
    return {lines.begin(), lines.end()};
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::optional<std::string> takeQuoted(std::string_view& text) {
    if (!text.starts_with('"'))
        return std::nullopt;
    std::string content;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            text.remove_prefix(i + 1);
            return content;
        }
        if (text[i] == '\\' && i + 1 < text.size())
            ++i;
        content += text[i];
    }
    return std::nullopt;
}

std::string lowered(std::string_view text) {
    std::string small(text);
    std::ranges::transform(small, small.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return small;
}

} // namespace Halden::System
