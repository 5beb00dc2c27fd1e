#include "Services/CameraTestDriver/Convergence.h"

#include "Services/CameraAccess/AutoSwitching.h"
#include "Services/CameraAccess/Convergence.h"

#include <string_view>

namespace {

struct Line {
    std::string_view on;
    std::string_view off;
};

using Lines = AutoSwitchLines<Line>;

void write(Console& console, const Lines& lines, AutoSwitchOutcome outcome, bool on) {
    const Line& line = lines.of(outcome);
    console.writeLine(on ? line.on : line.off);
}

void autoExposure(Console& console, const Platform::MediaCapture& capture, bool on) {
    static const Lines lines{
        .switchedNewer = {"Auto ExposureControl:  on ", "Auto ExposureControl:  off "},
        .switchedOlder = {"Auto Exposure:  on ", "Auto Exposure:  off "},
        .refused = {"Can't set auto exposure:  on ", "Can't set auto exposure:  off "},
        .noAutoMode = {"No exposure control supported", "No exposure control supported"},
        .noControl = {"No exposure control supported", "No exposure control supported"},
    };
    write(console, lines, switchAutoExposure(capture, on), on);
}

void autoFocus(Console& console, const Platform::MediaCapture& capture, bool on) {
    static const Lines lines{
        .switchedNewer = {"Auto Focus:  on ", "Auto Focus:  off "},
        .switchedOlder = {"Auto Focus:  on ", "Auto Focus:  off "},
        .refused = {"Can't set auto focus:  on ", "Can't set auto focus:  off "},
        .noAutoMode = {"Auto Focus not supported", "Auto Focus is off"},
        .noControl = {"No focus control supported", "No focus control supported"},
    };
    write(console, lines, switchAutoFocus(capture, on), on);
}

void autoWhiteBalance(Console& console, const Platform::MediaCapture& capture, bool on) {
    static const Lines lines{
        .switchedNewer = {"Auto WB:  on ", "Auto WB:  off "},
        .switchedOlder = {"Auto WB:  on ", "Auto WB:  off "},
        .refused = {"Can't set auto WB:  on ", "Can't set auto WB:  off "},
        .noAutoMode = {"Auto White Balance not supported", "Auto White Balance is off"},
        .noControl = {"No white balance supported", "No white balance supported"},
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
              .camera = ""});
}
