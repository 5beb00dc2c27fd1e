#include "Platform/Simulated/DeviceController.h"

#include "Platform/Simulated/NewerControls.h"
#include "Platform/Simulated/DeviceControl.h"

#include <utility>

namespace Platform::Simulated {

DeviceController::DeviceController(std::shared_ptr<CaptureCore> session,
                                         std::shared_ptr<SimulatedCamera> camera)
    : _session(std::move(session)), _camera(std::move(camera)) {}

MediaDeviceControl DeviceController::older(OlderControl control) const {
    return std::make_shared<DeviceControl>(_session, _camera, control);
}

Platform::ExposureControl DeviceController::ExposureControl() const {
    return std::make_shared<SimulatedExposureControl>(_session, _camera);
}

Platform::FocusControl DeviceController::FocusControl() const {
    return std::make_shared<SimulatedFocusControl>(_session, _camera);
}

Platform::WhiteBalanceControl DeviceController::WhiteBalanceControl() const {
    return std::make_shared<SimulatedWhiteBalanceControl>(_session, _camera);
}

Platform::IsoSpeedControl DeviceController::IsoSpeedControl() const {
    return std::make_shared<SimulatedIsoSpeedControl>(_session, _camera);
}

Platform::ExposureCompensationControl DeviceController::ExposureCompensationControl() const {
    return std::make_shared<SimulatedExposureCompensationControl>(_session, _camera);
}

} // namespace Platform::Simulated
