#include "Services/CameraAccess/AutoSwitching.h"

#include "Platform/Interface/AsyncWait.h"

using Platform::blockingWait;

namespace {

AutoSwitchOutcome trySetAuto(Platform::IMediaDeviceControl& control, bool on) {
    return control.TrySetAuto(on) ? AutoSwitchOutcome::SwitchedOlder : AutoSwitchOutcome::Refused;
}

AutoSwitchOutcome switchOlder(Platform::IMediaDeviceControl& control, bool on) {
    const auto capabilities = control.Capabilities();
    if (!capabilities.Supported)
        return AutoSwitchOutcome::NoControl;
    return capabilities.AutoModeSupported ? trySetAuto(control, on) : AutoSwitchOutcome::NoAutoMode;
}

} // namespace

AutoSwitchOutcome switchAutoExposure(const Platform::MediaCapture& capture, bool on) {
    const auto controller = capture->VideoDeviceController();
    const auto newer = controller->ExposureControl();
    if (newer->Supported()) {
        blockingWait(newer->SetAutoAsync(on));
        return AutoSwitchOutcome::SwitchedNewer;
    }
    const auto older = controller->Exposure();
    return older->Capabilities().Supported ? trySetAuto(*older, on) : AutoSwitchOutcome::NoControl;
}

AutoSwitchOutcome switchAutoFocus(const Platform::MediaCapture& capture, bool on) {
    const auto controller = capture->VideoDeviceController();
    const auto newer = controller->FocusControl();
    if (newer->Supported()) {
        blockingWait(newer->SetPresetAsync(Platform::FocusPreset::Auto));
        return AutoSwitchOutcome::SwitchedNewer;
    }
    return switchOlder(*controller->Focus(), on);
}

AutoSwitchOutcome switchAutoWhiteBalance(const Platform::MediaCapture& capture, bool on) {
    const auto controller = capture->VideoDeviceController();
    const auto newer = controller->WhiteBalanceControl();
    if (newer->Supported()) {
        blockingWait(newer->SetPresetAsync(Platform::ColorTemperaturePreset::Auto));
        return AutoSwitchOutcome::SwitchedNewer;
    }
    return switchOlder(*controller->WhiteBalance(), on);
}
