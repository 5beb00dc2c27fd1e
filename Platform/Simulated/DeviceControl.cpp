#include "Platform/Simulated/DeviceControl.h"

#include "Platform/Simulated/Session/CameraCall.h"

#include <utility>

namespace Platform::Simulated {
namespace {

Json::Value argument(Json::Value value) {
    Json::Value arguments(Json::arrayValue);
    arguments.append(std::move(value));
    return arguments;
}

} // namespace

DeviceControl::DeviceControl(std::shared_ptr<CaptureCore> core, std::shared_ptr<SimulatedCamera> camera,
                             OlderControl control)
    : _core(std::move(core)), _camera(std::move(camera)), _control(control) {}

template <typename Work>
auto DeviceControl::call(const char* operation, Json::Value arguments, Work work) const {
    return cameraCall(_core, _camera, {operation, {}, nameOf(_control), std::move(arguments)}, [&] {
        _core->requireOpen(operation, _camera);
        return work(_camera->controls());
    });
}

MediaDeviceControlCapabilities DeviceControl::Capabilities() const {
    return call("MediaDeviceControl.Capabilities", {},
                [&](CameraControls& controls) { return controls.capabilities(_control); });
}

bool DeviceControl::TrySetValue(double value) {
    return call("MediaDeviceControl.TrySetValue", argument(journalNumber(value)),
                [&](CameraControls& controls) { return controls.trySetValue(_control, value); });
}

bool DeviceControl::TryGetValue(double& value) const {
    return call("MediaDeviceControl.TryGetValue", {},
                [&](CameraControls& controls) { return controls.tryGetValue(_control, value); });
}

bool DeviceControl::TrySetAuto(bool on) {
    return call("MediaDeviceControl.TrySetAuto", argument(on),
                [&](CameraControls& controls) { return controls.trySetAuto(_control, on); });
}

bool DeviceControl::TryGetAuto(bool& on) const {
    return call("MediaDeviceControl.TryGetAuto", {},
                [&](CameraControls& controls) { return controls.tryGetAuto(_control, on); });
}

} // namespace Platform::Simulated
