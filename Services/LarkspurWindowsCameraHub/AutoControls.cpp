#include "Services/LarkspurWindowsCameraHub/AutoControls.h"

#include "Services/CameraAccess/AutoSwitching.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <map>

using log4cxx::Level;

namespace {

struct Line {
    log4cxx::LevelPtr level;
    const char* on;
    const char* off;
};

using Lines = std::map<AutoSwitchOutcome, Line>;

void log(const Lines& lines, AutoSwitchOutcome outcome, bool on) {
    const Line& line = lines.at(outcome);
    LOG4CXX_LOG(deviceLogger(), line.level, (on ? line.on : line.off));
}

} // namespace

void autoExposure(Platform::MediaCapture capture, bool on) {
    using enum AutoSwitchOutcome;
    static const Lines lines{
        {SwitchedNewer, {Level::getInfo(), "  Auto ExposureControl:  on ", "  Auto ExposureControl:  off "}},
        {SwitchedOlder, {Level::getInfo(), "  Auto Exposure:  on ", "  Auto Exposure:  off "}},
        {Refused, {Level::getError(), "  Can't set auto exposure:  on ", "  Can't set auto exposure:  off "}},
        {NoControl, {Level::getWarn(), "  No exposure control supported", "  No exposure control supported"}},
    };
    log(lines, switchAutoExposure(capture, on), on);
}

void autoFocus(Platform::MediaCapture capture, bool on) {
    using enum AutoSwitchOutcome;
    static const Lines lines{
        {SwitchedNewer, {Level::getInfo(), "  Auto Focus:  on ", "  Auto Focus:  off "}},
        {SwitchedOlder, {Level::getInfo(), "  Auto Focus:  on ", "  Auto Focus:  off "}},
        {Refused, {Level::getError(), "  Can't set auto focus:  on ", "  Can't set auto focus:  off "}},
        {NoAutoMode, {Level::getInfo(), "  Auto Focus not supported", "  Auto Focus is off"}},
        {NoControl, {Level::getInfo(), "  No focus control supported", "  No focus control supported"}},
    };
    log(lines, switchAutoFocus(capture, on), on);
}

void autoWhiteBalance(Platform::MediaCapture capture, bool on) {
    using enum AutoSwitchOutcome;
    static const Lines lines{
        {SwitchedNewer, {Level::getInfo(), "  Auto WB:  on ", "  Auto WB:  off "}},
        {SwitchedOlder, {Level::getInfo(), "  Auto WB:  on ", "  Auto WB:  off "}},
        {Refused, {Level::getError(), "  Can't set auto WB:  on ", "  Can't set auto WB:  off "}},
        {NoAutoMode, {Level::getInfo(), "  Auto White Balance not supported", "  Auto White Balance is off"}},
        {NoControl, {Level::getInfo(), "  No white balance supported", "  No white balance supported"}},
    };
    log(lines, switchAutoWhiteBalance(capture, on), on);
}
