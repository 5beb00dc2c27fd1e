#include "Services/CameraTestDriver/Convergence.h"

#include "Services/CameraAccess/AutoSwitching.h"
#include "Services/CameraAccess/Convergence.h"

#include <map>
#include <string_view>

namespace {

struct Line {
    std::string_view on;
    std::string_view off;
};

using Lines = std::map<AutoSwitchOutcome, Line>;

void write(Console& console, const Lines& lines, AutoSwitchOutcome outcome, bool on) {
    const Line& line = lines.at(outcome);
    console.writeLine(on ? line.on : line.off);
}

void autoExposure(Console& console, const Platform::MediaCapture& capture, bool on) {
    using enum AutoSwitchOutcome;
    static const Lines lines{
        {SwitchedNewer, {"Auto ExposureControl:  on ", "Auto ExposureControl:  off "}},
        {SwitchedOlder, {"Auto Exposure:  on ", "Auto Exposure:  off "}},
        {Refused, {"Can't set auto exposure:  on ", "Can't set auto exposure:  off "}},
        {NoControl, {"No exposure control supported", "No exposure control supported"}},
    };
    write(console, lines, switchAutoExposure(capture, on), on);
}

void autoFocus(Console& console, const Platform::MediaCapture& capture, bool on) {
    using enum AutoSwitchOutcome;
    static const Lines lines{
        {SwitchedNewer, {"Auto Focus:  on ", "Auto Focus:  off "}},
        {SwitchedOlder, {"Auto Focus:  on ", "Auto Focus:  off "}},
        {Refused, {"Can't set auto focus:  on ", "Can't set auto focus:  off "}},
        {NoAutoMode, {"Auto Focus not supported", "Auto Focus is off"}},
        {NoControl, {"No focus control supported", "No focus control supported"}},
    };
    write(console, lines, switchAutoFocus(capture, on), on);
}

void autoWhiteBalance(Console& console, const Platform::MediaCapture& capture, bool on) {
    using enum AutoSwitchOutcome;
    static const Lines lines{
        {SwitchedNewer, {"Auto WB:  on ", "Auto WB:  off "}},
        {SwitchedOlder, {"Auto WB:  on ", "Auto WB:  off "}},
        {Refused, {"Can't set auto WB:  on ", "Can't set auto WB:  off "}},
        {NoAutoMode, {"Auto White Balance not supported", "Auto White Balance is off"}},
        {NoControl, {"No white balance supported", "No white balance supported"}},
    };
    write(console, lines, switchAutoWhiteBalance(capture, on), on);
}

} // namespace

void converge(Console& console, const DriverConnection& connection, bool exposure, bool focus, bool wb) {
    const auto& capture = connection.mediaCapture;
    converge(exposure, focus, wb,
             {.autoExposure = [&](bool on) { autoExposure(console, capture, on); },
              .autoFocus = [&](bool on) { autoFocus(console, capture, on); },
              .autoWhiteBalance = [&](bool on) { autoWhiteBalance(console, capture, on); },
              .tell = [&](const std::string& line) { console.writeLine(line); },
              .firstLineEnd = ""});
}
