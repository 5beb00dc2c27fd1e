#include "Platform/V4l2/VideoController.h"

#include "Platform/V4l2/AbsentControls.h"
#include "Platform/V4l2/DeviceControl.h"
#include "Platform/V4l2/SensitivityControls.h"

namespace Platform::V4l2 {

MediaDeviceControl VideoController::Exposure() const {
    return std::make_shared<DeviceControl>(_core, exposureMapping());
}

MediaDeviceControl VideoController::Focus() const { return std::make_shared<DeviceControl>(_core, focusMapping()); }

MediaDeviceControl VideoController::WhiteBalance() const {
    return std::make_shared<DeviceControl>(_core, whiteBalanceMapping());
}

MediaDeviceControl VideoController::Brightness() const {
    return std::make_shared<DeviceControl>(_core, brightnessMapping());
}

MediaDeviceControl VideoController::Contrast() const {
    return std::make_shared<DeviceControl>(_core, contrastMapping());
}

Platform::ExposureControl VideoController::ExposureControl() const {
    return std::make_shared<AbsentExposureControl>(_core);
}

Platform::FocusControl VideoController::FocusControl() const { return std::make_shared<AbsentFocusControl>(_core); }

Platform::WhiteBalanceControl VideoController::WhiteBalanceControl() const {
    return std::make_shared<AbsentWhiteBalanceControl>(_core);
}

Platform::IsoSpeedControl VideoController::IsoSpeedControl() const { return std::make_shared<IsoSensitivity>(_core); }

Platform::ExposureCompensationControl VideoController::ExposureCompensationControl() const {
    return std::make_shared<ExposureBias>(_core);
}

} // namespace Platform::V4l2
