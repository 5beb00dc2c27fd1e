#include "Platform/Simulated/Scenario/GuidText.h"

#include <algorithm>
#include <cstdint>

namespace Platform::Simulated {
namespace {

char16_t lowered(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

} // namespace

std::optional<Guid> guidFromText(std::u16string_view text) {
    // 'x' stands for a hexadecimal digit.
    constexpr std::u16string_view form = u"{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
    if (text.size() != form.size())
        return std::nullopt;
    std::array<std::uint8_t, 32> digits{};
    std::size_t count = 0;
    for (std::size_t i = 0; i < form.size(); ++i) {
        if (form[i] != u'x') {
            if (text[i] != form[i])
                return std::nullopt;
            continue;
        }
        const auto digit = std::u16string_view(u"0123456789abcdef").find(lowered(text[i]));
        if (digit == std::u16string_view::npos)
            return std::nullopt;
        digits.at(count++) = static_cast<std::uint8_t>(digit);
    }
    std::size_t next = 0;
    const auto take = [&](int number) {
        std::uint32_t value = 0;
        for (int i = 0; i < number; ++i)
            value = value << 4 | digits.at(next++);
        return value;
    };
    Guid guid;
    guid.Data1 = take(8);
    guid.Data2 = static_cast<std::uint16_t>(take(4));
    guid.Data3 = static_cast<std::uint16_t>(take(4));
    for (std::uint8_t& byte : guid.Data4)
        byte = static_cast<std::uint8_t>(take(2));
    return guid;
}

bool equalIgnoringCase(std::u16string_view left, std::u16string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char16_t a, char16_t b) { return lowered(a) == lowered(b); });
}

} // namespace Platform::Simulated
