#pragma once

#include "Platform/Interface/VideoDeviceController.h"
#include "Platform/Simulated/Session/CaptureCore.h"

#include <memory>

namespace Platform::Simulated {

/// The controls of an open capture's camera. Any thread.
class DeviceController final : public IVideoDeviceController {
public:
    DeviceController(std::shared_ptr<CaptureCore> core, std::shared_ptr<SimulatedCamera> camera);

    MediaDeviceControl Exposure() const override { return older(OlderControl::Exposure); }
    MediaDeviceControl Focus() const override { return older(OlderControl::Focus); }
    MediaDeviceControl WhiteBalance() const override { return older(OlderControl::WhiteBalance); }
    MediaDeviceControl Brightness() const override { return older(OlderControl::Brightness); }
    MediaDeviceControl Contrast() const override { return older(OlderControl::Contrast); }

    Platform::ExposureControl ExposureControl() const override;
    Platform::FocusControl FocusControl() const override;
    Platform::WhiteBalanceControl WhiteBalanceControl() const override;
    Platform::IsoSpeedControl IsoSpeedControl() const override;
    Platform::ExposureCompensationControl ExposureCompensationControl() const override;

private:
    MediaDeviceControl older(OlderControl control) const;

    const std::shared_ptr<CaptureCore> _core;
    const std::shared_ptr<SimulatedCamera> _camera;
};

} // namespace Platform::Simulated
