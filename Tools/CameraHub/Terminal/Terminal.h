#pragma once

#include "Tools/CameraHub/Picture/TerminalPicture.h"

#include <optional>

namespace CommandLine {

/// The size of the terminal at a descriptor; none where it is a file or a pipe.
std::optional<TerminalSize> terminalSize(int descriptor);

} // namespace CommandLine
