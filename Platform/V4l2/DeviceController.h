#pragma once

#include "Platform/Interface/VideoDeviceController.h"
#include "Platform/V4l2/Session/CaptureCore.h"

#include <memory>
#include <utility>

namespace Platform::V4l2 {

/// The settings of an open capture, on the kernel's controls of its first source. Exposure, focus and white balance
/// are of the older generation; ISO speed and exposure bias exist in the newer one alone. Any thread.
class DeviceController final : public IVideoDeviceController {
public:
    explicit DeviceController(std::shared_ptr<CaptureCore> core) : _core(std::move(core)) {}

    MediaDeviceControl Exposure() const override;
    MediaDeviceControl Focus() const override;
    MediaDeviceControl WhiteBalance() const override;
    MediaDeviceControl Brightness() const override;
    MediaDeviceControl Contrast() const override;

    Platform::ExposureControl ExposureControl() const override;
    Platform::FocusControl FocusControl() const override;
    Platform::WhiteBalanceControl WhiteBalanceControl() const override;
    Platform::IsoSpeedControl IsoSpeedControl() const override;
    Platform::ExposureCompensationControl ExposureCompensationControl() const override;

private:
    const std::shared_ptr<CaptureCore> _core;
};

} // namespace Platform::V4l2
