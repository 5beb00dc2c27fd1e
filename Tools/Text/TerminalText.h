#pragma once

#include <string>
#include <string_view>

namespace CommandLine {

/// The text in well-formed UTF-8 without control characters, each of which, as each broken byte, becomes U+FFFD: names
/// come from devices, and must not steer the terminal. Any thread, as all functions here.
std::string printable(std::string_view text);

/// How many columns of a terminal a printable text takes.
int displayWidth(std::string_view text);

/// A printable text within so many columns (at least 1), with an ellipsis at its end where it had to be cut.
std::string shortened(std::string_view text, int columns);

} // namespace CommandLine
