#include "Platform/Simulated/NewerControls.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/PlatformError.h"
#include "Platform/Simulated/Session/CameraCall.h"

#include <utility>

namespace Platform::Simulated {

CameraControls& NewerControl::controls(const char* operation) const {
    _core->requireOpen(operation, _camera);
    return _camera->controls();
}

template <typename IsSupported, typename Set> IAsyncAction
NewerControl::setAsync(const char* operation, Json::Value argument, IsSupported isSupported, Set set) const {
    Json::Value arguments(Json::arrayValue);
    arguments.append(std::move(argument));
    return cameraCallAsync<void>(_core, _camera, {operation, {}, nullptr, std::move(arguments)},
                                 [core = _core, camera = _camera, operation, isSupported, set] {
                                     core->requireOpen(operation, camera);
                                     if (!isSupported(camera->controls()))
                                         throw Shared::platformError(operation, Halden::toUtf8(camera->deviceId()),
                                                                     winrt::result::fail,
                                                                     "The camera does not have this control.");
                                     set(camera->controls());
                                 });
}

bool SimulatedExposureControl::Supported() const {
    return controls("ExposureControl.Supported").exposureControl().supported;
}

bool SimulatedExposureControl::Auto() const { return controls("ExposureControl.Auto").exposureControl().automatic; }

TimeSpan SimulatedExposureControl::Min() const {
    return TimeSpan(controls("ExposureControl.Min").exposureControl().min);
}

TimeSpan SimulatedExposureControl::Max() const {
    return TimeSpan(controls("ExposureControl.Max").exposureControl().max);
}

TimeSpan SimulatedExposureControl::Step() const {
    return TimeSpan(controls("ExposureControl.Step").exposureControl().step);
}

TimeSpan SimulatedExposureControl::Value() const {
    return TimeSpan(controls("ExposureControl.Value").exposureControl().value);
}

IAsyncAction SimulatedExposureControl::SetAutoAsync(bool on) {
    return setAsync(
        "ExposureControl.SetAutoAsync", on,
        [](const CameraControls& settings) { return settings.exposureControl().supported; },
        [on](CameraControls& settings) { settings.setExposureAuto(on); });
}

IAsyncAction SimulatedExposureControl::SetValueAsync(TimeSpan value) {
    return setAsync(
        "ExposureControl.SetValueAsync", Json::Value::Int64{value.count()},
        [](const CameraControls& settings) { return settings.exposureControl().supported; },
        [value](CameraControls& settings) { settings.setExposureTicks(value.count()); });
}

bool SimulatedFocusControl::Supported() const { return controls("FocusControl.Supported").focusControl().supported; }

FocusPreset SimulatedFocusControl::Preset() const {
    return static_cast<FocusPreset>(controls("FocusControl.Preset").focusControl().preset);
}

IAsyncAction SimulatedFocusControl::SetPresetAsync(FocusPreset preset) {
    const int number = static_cast<int>(preset);
    return setAsync(
        "FocusControl.SetPresetAsync", number,
        [](const CameraControls& settings) { return settings.focusControl().supported; },
        [number](CameraControls& settings) { settings.setFocusPreset(number); });
}

bool SimulatedWhiteBalanceControl::Supported() const {
    return controls("WhiteBalanceControl.Supported").whiteBalanceControl().supported;
}

ColorTemperaturePreset SimulatedWhiteBalanceControl::Preset() const {
    return static_cast<ColorTemperaturePreset>(controls("WhiteBalanceControl.Preset").whiteBalanceControl().preset);
}

IAsyncAction SimulatedWhiteBalanceControl::SetPresetAsync(ColorTemperaturePreset preset) {
    const int number = static_cast<int>(preset);
    return setAsync(
        "WhiteBalanceControl.SetPresetAsync", number,
        [](const CameraControls& settings) { return settings.whiteBalanceControl().supported; },
        [number](CameraControls& settings) { settings.setWhiteBalancePreset(number); });
}

bool SimulatedIsoSpeedControl::Supported() const {
    return controls("IsoSpeedControl.Supported").isoSpeedControl().supported;
}

bool SimulatedIsoSpeedControl::Auto() const { return controls("IsoSpeedControl.Auto").isoSpeedControl().automatic; }

std::uint32_t SimulatedIsoSpeedControl::Min() const {
    return static_cast<std::uint32_t>(controls("IsoSpeedControl.Min").isoSpeedControl().min);
}

std::uint32_t SimulatedIsoSpeedControl::Max() const {
    return static_cast<std::uint32_t>(controls("IsoSpeedControl.Max").isoSpeedControl().max);
}

std::uint32_t SimulatedIsoSpeedControl::Step() const {
    return static_cast<std::uint32_t>(controls("IsoSpeedControl.Step").isoSpeedControl().step);
}

std::uint32_t SimulatedIsoSpeedControl::Value() const {
    return static_cast<std::uint32_t>(controls("IsoSpeedControl.Value").isoSpeedControl().value);
}

IAsyncAction SimulatedIsoSpeedControl::SetValueAsync(std::uint32_t value) {
    return setAsync(
        "IsoSpeedControl.SetValueAsync", value,
        [](const CameraControls& settings) { return settings.isoSpeedControl().supported; },
        [value](CameraControls& settings) { settings.setIsoSpeed(value); });
}

bool SimulatedExposureCompensationControl::Supported() const {
    return controls("ExposureCompensationControl.Supported").exposureCompensationControl().supported;
}

float SimulatedExposureCompensationControl::Value() const {
    return controls("ExposureCompensationControl.Value").exposureCompensationControl().value;
}

} // namespace Platform::Simulated
