#include "Tools/CameraHub/Terminal/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace CommandLine {

std::optional<TerminalSize> terminalSize(int descriptor) {
    if (isatty(descriptor) == 0)
        return std::nullopt;
    winsize size = {};
    if (ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0 || size.ws_row == 0)
        return TerminalSize();
    return TerminalSize{size.ws_col, size.ws_row};
}

} // namespace CommandLine
