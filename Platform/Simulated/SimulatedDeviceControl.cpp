#include "Platform/Simulated/SimulatedDeviceControl.h"

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

SimulatedDeviceControl::SimulatedDeviceControl(std::shared_ptr<CaptureSession> session,
                                               std::shared_ptr<SimulatedCamera> camera, OlderControl control)
    : _session(std::move(session)), _camera(std::move(camera)), _control(control) {}

template <typename Work>
auto SimulatedDeviceControl::call(const char* operation, Json::Value arguments, Work work) const {
    return cameraCall(_session, _camera, {operation, {}, nameOf(_control), std::move(arguments)}, [&] {
        _session->requireOpen(operation, _camera);
        return work(_camera->controls());
    });
}

MediaDeviceControlCapabilities SimulatedDeviceControl::Capabilities() const {
    return call("MediaDeviceControl.Capabilities", {},
                [&](CameraControls& controls) { return controls.capabilities(_control); });
}

bool SimulatedDeviceControl::TrySetValue(double value) {
    return call("MediaDeviceControl.TrySetValue", argument(journalNumber(value)),
                [&](CameraControls& controls) { return controls.trySetValue(_control, value); });
}

bool SimulatedDeviceControl::TryGetValue(double& value) const {
    return call("MediaDeviceControl.TryGetValue", {},
                [&](CameraControls& controls) { return controls.tryGetValue(_control, value); });
}

bool SimulatedDeviceControl::TrySetAuto(bool on) {
    return call("MediaDeviceControl.TrySetAuto", argument(on),
                [&](CameraControls& controls) { return controls.trySetAuto(_control, on); });
}

bool SimulatedDeviceControl::TryGetAuto(bool& on) const {
    return call("MediaDeviceControl.TryGetAuto", {},
                [&](CameraControls& controls) { return controls.tryGetAuto(_control, on); });
}

} // namespace Platform::Simulated
