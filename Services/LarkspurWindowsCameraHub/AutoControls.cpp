#include "Services/LarkspurWindowsCameraHub/AutoControls.h"

#include "Services/CameraAccess/AutoSwitching.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

using log4cxx::Level;

namespace {

struct Line {
    log4cxx::LevelPtr level;
    const char* on;
    const char* off;

    const char* text(bool isOn) const { return isOn ? on : off; }
};

using Lines = AutoSwitchLines<Line>;

} // namespace

// Each function logs its lines itself: the log knows them by its name.

void autoExposure(Platform::MediaCapture capture, bool on) {
    static const Lines lines{
        .switchedNewer = {Level::getInfo(), "  Auto ExposureControl:  on ", "  Auto ExposureControl:  off "},
        .switchedOlder = {Level::getInfo(), "  Auto Exposure:  on ", "  Auto Exposure:  off "},
        .refused = {Level::getError(), "  Can't set auto exposure:  on ", "  Can't set auto exposure:  off "},
        .noAutoMode = {Level::getWarn(), "  No exposure control supported", "  No exposure control supported"},
        .noControl = {Level::getWarn(), "  No exposure control supported", "  No exposure control supported"},
    };
    const Line& line = lines.of(switchAutoExposure(capture, on));
    LOG4CXX_LOG(deviceLogger(), line.level, line.text(on));
}

void autoFocus(Platform::MediaCapture capture, bool on) {
    static const Lines lines{
        .switchedNewer = {Level::getInfo(), "  Auto Focus:  on ", "  Auto Focus:  off "},
        .switchedOlder = {Level::getInfo(), "  Auto Focus:  on ", "  Auto Focus:  off "},
        .refused = {Level::getError(), "  Can't set auto focus:  on ", "  Can't set auto focus:  off "},
        .noAutoMode = {Level::getInfo(), "  Auto Focus not supported", "  Auto Focus is off"},
        .noControl = {Level::getInfo(), "  No focus control supported", "  No focus control supported"},
    };
    const Line& line = lines.of(switchAutoFocus(capture, on));
    LOG4CXX_LOG(deviceLogger(), line.level, line.text(on));
}

void autoWhiteBalance(Platform::MediaCapture capture, bool on) {
    static const Lines lines{
        .switchedNewer = {Level::getInfo(), "  Auto WB:  on ", "  Auto WB:  off "},
        .switchedOlder = {Level::getInfo(), "  Auto WB:  on ", "  Auto WB:  off "},
        .refused = {Level::getError(), "  Can't set auto WB:  on ", "  Can't set auto WB:  off "},
        .noAutoMode = {Level::getInfo(), "  Auto White Balance not supported", "  Auto White Balance is off"},
        .noControl = {Level::getInfo(), "  No white balance supported", "  No white balance supported"},
    };
    const Line& line = lines.of(switchAutoWhiteBalance(capture, on));
    LOG4CXX_LOG(deviceLogger(), line.level, line.text(on));
}
