#include "Platform/Simulated/DeviceController.h"

#include "Platform/Simulated/DeviceControl.h"
#include "Platform/Simulated/NewerControls.h"

#include <utility>

namespace Platform::Simulated {

DeviceController::DeviceController(std::shared_ptr<CaptureCore> core, std::shared_ptr<SimulatedCamera> camera)
    : _core(std::move(core)), _camera(std::move(camera)) {}

MediaDeviceControl DeviceController::older(OlderControl control) const {
    return std::make_shared<DeviceControl>(_core, _camera, control);
}

Platform::ExposureControl DeviceController::ExposureControl() const {
    return std::make_shared<SimulatedExposureControl>(_core, _camera);
}

Platform::FocusControl DeviceController::FocusControl() const {
    return std::make_shared<SimulatedFocusControl>(_core, _camera);
}

Platform::WhiteBalanceControl DeviceController::WhiteBalanceControl() const {
    return std::make_shared<SimulatedWhiteBalanceControl>(_core, _camera);
}

Platform::IsoSpeedControl DeviceController::IsoSpeedControl() const {
    return std::make_shared<SimulatedIsoSpeedControl>(_core, _camera);
}

Platform::ExposureCompensationControl DeviceController::ExposureCompensationControl() const {
    return std::make_shared<SimulatedExposureCompensationControl>(_core, _camera);
}

} // namespace Platform::Simulated
