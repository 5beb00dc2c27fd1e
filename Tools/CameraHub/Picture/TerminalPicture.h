#pragma once

#include "Tools/CameraHub/Picture/RgbPicture.h"

#include <string>

namespace CommandLine {

/// What a terminal shows, in characters.
struct TerminalSize {
    int columns = 80;
    int rows = 24;
};

/// How many colours a terminal has.
enum class TerminalColours { None, Eight, Sixteen, TwoHundredFiftySix, True };

/// What the environment (TERM, COLORTERM and the like) says of the terminal.
TerminalColours coloursOfTerminal();

/// The picture in block characters, as large as it can be within the size and in its proportions; whole lines, each of
/// which leaves the terminal's colours as they were. Without colours it is drawn in the terminal's own two, and without
/// control sequences.
std::string drawInTerminal(const RgbPicture& picture, TerminalSize size, TerminalColours colours);

} // namespace CommandLine
