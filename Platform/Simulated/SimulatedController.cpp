#include "Platform/Simulated/SimulatedController.h"

#include "Platform/Simulated/NewerControls.h"
#include "Platform/Simulated/SimulatedDeviceControl.h"

#include <utility>

namespace Platform::Simulated {

SimulatedController::SimulatedController(std::shared_ptr<CaptureSession> session,
                                         std::shared_ptr<SimulatedCamera> camera)
    : _session(std::move(session)), _camera(std::move(camera)) {}

MediaDeviceControl SimulatedController::older(OlderControl control) const {
    return std::make_shared<SimulatedDeviceControl>(_session, _camera, control);
}

Platform::ExposureControl SimulatedController::ExposureControl() const {
    return std::make_shared<SimulatedExposureControl>(_session, _camera);
}

Platform::FocusControl SimulatedController::FocusControl() const {
    return std::make_shared<SimulatedFocusControl>(_session, _camera);
}

Platform::WhiteBalanceControl SimulatedController::WhiteBalanceControl() const {
    return std::make_shared<SimulatedWhiteBalanceControl>(_session, _camera);
}

Platform::IsoSpeedControl SimulatedController::IsoSpeedControl() const {
    return std::make_shared<SimulatedIsoSpeedControl>(_session, _camera);
}

Platform::ExposureCompensationControl SimulatedController::ExposureCompensationControl() const {
    return std::make_shared<SimulatedExposureCompensationControl>(_session, _camera);
}

} // namespace Platform::Simulated
