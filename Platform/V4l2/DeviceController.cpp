#include "Platform/V4l2/DeviceController.h"

#include "Platform/V4l2/AbsentControls.h"
#include "Platform/V4l2/DeviceControl.h"
#include "Platform/V4l2/ExposureBias.h"
#include "Platform/V4l2/IsoSensitivity.h"

namespace Platform::V4l2 {

MediaDeviceControl DeviceController::Exposure() const {
    return std::make_shared<DeviceControl>(_core, exposureMapping());
}

MediaDeviceControl DeviceController::Focus() const { return std::make_shared<DeviceControl>(_core, focusMapping()); }

MediaDeviceControl DeviceController::WhiteBalance() const {
    return std::make_shared<DeviceControl>(_core, whiteBalanceMapping());
}

MediaDeviceControl DeviceController::Brightness() const {
    return std::make_shared<DeviceControl>(_core, brightnessMapping());
}

MediaDeviceControl DeviceController::Contrast() const {
    return std::make_shared<DeviceControl>(_core, contrastMapping());
}

Platform::ExposureControl DeviceController::ExposureControl() const {
    return std::make_shared<AbsentExposureControl>(_core);
}

Platform::FocusControl DeviceController::FocusControl() const { return std::make_shared<AbsentFocusControl>(_core); }

Platform::WhiteBalanceControl DeviceController::WhiteBalanceControl() const {
    return std::make_shared<AbsentWhiteBalanceControl>(_core);
}

Platform::IsoSpeedControl DeviceController::IsoSpeedControl() const { return std::make_shared<IsoSensitivity>(_core); }

Platform::ExposureCompensationControl DeviceController::ExposureCompensationControl() const {
    return std::make_shared<ExposureBias>(_core);
}

} // namespace Platform::V4l2
