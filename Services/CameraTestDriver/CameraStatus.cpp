#include "Services/CameraTestDriver/CameraStatus.h"

namespace {

constexpr const char* onOrOff(bool on) { return on ? " on " : " off "; }

void printExposure(Console& console, Platform::IVideoDeviceController& controller) {
    const auto newer = controller.ExposureControl();
    if (newer->Supported()) {
        console.writeLine("Auto ExposureControl: ", onOrOff(newer->Auto()));
        console.writeLine("Exposure time: ", newer->Value().count()); // in ticks of 100 ns
        return;
    }
    const auto older = controller.Exposure();
    if (!older->Capabilities().Supported)
        return;
    bool isAuto = false;
    if (older->TryGetAuto(isAuto))
        console.writeLine("Auto Exposure: ", onOrOff(isAuto));
    double exposure = 0.0; // log2 of seconds
    if (older->TryGetValue(exposure))
        console.writeLine("Exposure time: ", exposure);
}

void printSensitivity(Console& console, Platform::IVideoDeviceController& controller) {
    const auto compensation = controller.ExposureCompensationControl();
    if (compensation->Supported())
        console.writeLine("Exposure comp: ", compensation->Value());
    const auto iso = controller.IsoSpeedControl();
    if (iso->Supported())
        console.writeLine("ISO speed auto: ", static_cast<int>(iso->Auto()));
}

void printWhiteBalance(Console& console, Platform::IVideoDeviceController& controller) {
    const auto newer = controller.WhiteBalanceControl();
    if (newer->Supported())
        console.writeLine("WB control: ", static_cast<int>(newer->Preset()));
    const auto older = controller.WhiteBalance();
    if (!older->Capabilities().Supported)
        return;
    bool isAuto = false;
    if (older->TryGetAuto(isAuto))
        console.writeLine("WB auto: ", static_cast<int>(isAuto));
    else
        console.writeLine("Failed to get auto");
}

} // namespace

void printCameraStatus(Console& console, Platform::MediaCapture capture) {
    const auto controller = capture->VideoDeviceController();
    printExposure(console, *controller);
    printSensitivity(console, *controller);
    printWhiteBalance(console, *controller);
    console.writeLine("Camera Stream State: ", static_cast<int>(capture->CameraStreamState()));
}
