#include "Services/LarkspurWindowsCameraHub/AutoControls.h"

#include "Services/CameraAccess/AutoSwitching.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

void autoExposure(Platform::MediaCapture capture, bool on) {
    switch (switchAutoExposure(capture, on)) {
    case AutoSwitchOutcome::SwitchedNewer:
        LOG4CXX_INFO(deviceLogger(), "  Auto ExposureControl: " << onOrOff(on));
        break;
    case AutoSwitchOutcome::SwitchedOlder:
        LOG4CXX_INFO(deviceLogger(), "  Auto Exposure: " << onOrOff(on));
        break;
    case AutoSwitchOutcome::Refused:
        LOG4CXX_ERROR(deviceLogger(), "  Can't set auto exposure: " << onOrOff(on));
        break;
    case AutoSwitchOutcome::NoAutoMode:
    case AutoSwitchOutcome::NoControl:
        LOG4CXX_WARN(deviceLogger(), "  No exposure control supported");
        break;
    }
}

void autoFocus(Platform::MediaCapture capture, bool on) {
    switch (switchAutoFocus(capture, on)) {
    case AutoSwitchOutcome::SwitchedNewer:
    case AutoSwitchOutcome::SwitchedOlder:
        LOG4CXX_INFO(deviceLogger(), "  Auto Focus: " << onOrOff(on));
        break;
    case AutoSwitchOutcome::Refused:
        LOG4CXX_ERROR(deviceLogger(), "  Can't set auto focus: " << onOrOff(on));
        break;
    case AutoSwitchOutcome::NoAutoMode:
        LOG4CXX_INFO(deviceLogger(), (on ? "  Auto Focus not supported" : "  Auto Focus is off"));
        break;
    case AutoSwitchOutcome::NoControl:
        LOG4CXX_INFO(deviceLogger(), "  No focus control supported");
        break;
    }
}

void autoWhiteBalance(Platform::MediaCapture capture, bool on) {
    switch (switchAutoWhiteBalance(capture, on)) {
    case AutoSwitchOutcome::SwitchedNewer:
    case AutoSwitchOutcome::SwitchedOlder:
        LOG4CXX_INFO(deviceLogger(), "  Auto WB: " << onOrOff(on));
        break;
    case AutoSwitchOutcome::Refused:
        LOG4CXX_ERROR(deviceLogger(), "  Can't set auto WB: " << onOrOff(on));
        break;
    case AutoSwitchOutcome::NoAutoMode:
        LOG4CXX_INFO(deviceLogger(), (on ? "  Auto White Balance not supported" : "  Auto White Balance is off"));
        break;
    case AutoSwitchOutcome::NoControl:
        LOG4CXX_INFO(deviceLogger(), "  No white balance supported");
        break;
    }
}
