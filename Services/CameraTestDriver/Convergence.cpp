#include "Services/CameraTestDriver/Convergence.h"

#include "Framework/CXX/Common/Clock.h"
#include "Services/CameraAccess/AutoSwitching.h"

#include <chrono>

namespace {

/// The time is fixed: nothing asks whether the controls have settled.
constexpr std::chrono::milliseconds convergenceTime{2000};

void autoExposure(Console& console, const Platform::MediaCapture& capture, bool on) {
    switch (switchAutoExposure(capture, on)) {
    case AutoSwitchOutcome::SwitchedNewer:
        return console.writeLine("Auto ExposureControl: ", onOrOff(on));
    case AutoSwitchOutcome::SwitchedOlder:
        return console.writeLine("Auto Exposure: ", onOrOff(on));
    case AutoSwitchOutcome::Refused:
        return console.writeLine("Can't set auto exposure: ", onOrOff(on));
    case AutoSwitchOutcome::NoAutoMode:
    case AutoSwitchOutcome::NoControl:
        return console.writeLine("No exposure control supported");
    }
}

void autoFocus(Console& console, const Platform::MediaCapture& capture, bool on) {
    switch (switchAutoFocus(capture, on)) {
    case AutoSwitchOutcome::SwitchedNewer:
    case AutoSwitchOutcome::SwitchedOlder:
        return console.writeLine("Auto Focus: ", onOrOff(on));
    case AutoSwitchOutcome::Refused:
        return console.writeLine("Can't set auto focus: ", onOrOff(on));
    case AutoSwitchOutcome::NoAutoMode:
        return console.writeLine(on ? "Auto Focus not supported" : "Auto Focus is off");
    case AutoSwitchOutcome::NoControl:
        return console.writeLine("No focus control supported");
    }
}

void autoWhiteBalance(Console& console, const Platform::MediaCapture& capture, bool on) {
    switch (switchAutoWhiteBalance(capture, on)) {
    case AutoSwitchOutcome::SwitchedNewer:
    case AutoSwitchOutcome::SwitchedOlder:
        return console.writeLine("Auto WB: ", onOrOff(on));
    case AutoSwitchOutcome::Refused:
        return console.writeLine("Can't set auto WB: ", onOrOff(on));
    case AutoSwitchOutcome::NoAutoMode:
        return console.writeLine(on ? "Auto White Balance not supported" : "Auto White Balance is off");
    case AutoSwitchOutcome::NoControl:
        return console.writeLine("No white balance supported");
    }
}

} // namespace

void converge(Console& console, const DriverConnection& connection, bool exposure, bool focus, bool wb) {
    if (!exposure && !focus && !wb)
        return;
    const auto& capture = connection.mediaCapture;
    console.writeLine("Turning on a preview stream to converge: ", exposure ? "[exposure] " : "",
                      focus ? "[focus] " : "", wb ? "[WB] " : "");
    console.writeLine("Turn auto settings on or off..");
    autoExposure(console, capture, exposure);
    autoFocus(console, capture, focus);
    autoWhiteBalance(console, capture, wb);

    console.writeLine("Converging..");
    Halden::currentClock()->sleepFor(convergenceTime);

    console.writeLine("Done... turn off auto settings for future captures..");
    if (exposure)
        autoExposure(console, capture, false);
    if (focus)
        autoFocus(console, capture, false);
    if (wb)
        autoWhiteBalance(console, capture, false);
}
