#include "Tools/Text/Quantity.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>

namespace CommandLine {

std::optional<Quantity> readQuantity(std::string_view text) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789."), text.size());
    Quantity quantity;
    const auto [stop, error] =
        std::from_chars(text.data(), text.data() + end, quantity.number, std::chars_format::fixed);
    if (error != std::errc() || stop != text.data() + end)
        return std::nullopt;
    quantity.rest = text.substr(end);
    quantity.rest.remove_prefix(std::min(quantity.rest.find_first_not_of(' '), quantity.rest.size()));
    return quantity;
}

std::string numberText(double number, int decimals) {
    std::array<char, 400> buffer{}; // more digits than the largest double has
    (void)std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, number);
    std::string text = buffer.data();
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.ends_with('.'))
            text.pop_back();
    }
    return text;
}

} // namespace CommandLine
