#pragma once

#include "Platform/Interface/MediaCapture.h"

/// What became of switching one automatic of an open camera.
enum class AutoSwitchOutcome {
    SwitchedNewer, ///< through the control of the newer generation
    SwitchedOlder,
    Refused,    ///< by the older control
    NoAutoMode, ///< the older control has none; it was left alone
    NoControl
};

/// Each switches one automatic on or off, through the control of the newer generation where the camera
/// has it, else through the older one. Blocks until the platform is done; raises its errors. Exposure is
/// not asked whether it has an automatic mode: its outcome is never NoAutoMode.
AutoSwitchOutcome switchAutoExposure(const Platform::MediaCapture& capture, bool on);

/// With the newer control the preset is Auto for both values of `on`: turning off has no effect on the
/// device.
AutoSwitchOutcome switchAutoFocus(const Platform::MediaCapture& capture, bool on);

/// As switchAutoFocus.
AutoSwitchOutcome switchAutoWhiteBalance(const Platform::MediaCapture& capture, bool on);

/// What is said of each outcome.
template <typename Line> struct AutoSwitchLines {
    Line switchedNewer;
    Line switchedOlder;
    Line refused;
    Line noAutoMode;
    Line noControl;

    const Line& of(AutoSwitchOutcome outcome) const {
        switch (outcome) {
        case AutoSwitchOutcome::SwitchedNewer:
            return switchedNewer;
        case AutoSwitchOutcome::SwitchedOlder:
            return switchedOlder;
        case AutoSwitchOutcome::Refused:
            return refused;
        case AutoSwitchOutcome::NoAutoMode:
            return noAutoMode;
        case AutoSwitchOutcome::NoControl:
            break;
        }
        return noControl;
    }
};
