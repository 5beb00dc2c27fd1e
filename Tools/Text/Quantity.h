#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace CommandLine {

/// A number and what stands behind it, as in "20ms".
struct Quantity {
    double number = 0;
    /// Without blanks before it; may be empty.
    std::string_view rest;
};

/// None where the text does not begin with a number of digits and at most one point: signs and exponents are nothing
/// that people write in times. Any thread.
std::optional<Quantity> readQuantity(std::string_view text);

/// Without zeros at its end: "15.625", "20". `decimals` is at most 9.
std::string numberText(double number, int decimals);

} // namespace CommandLine
