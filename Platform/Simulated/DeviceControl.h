#pragma once

#include "Platform/Interface/MediaDeviceControl.h"
#include "Platform/Simulated/Session/CaptureCore.h"

#include <memory>

namespace Platform::Simulated {

/// One control of the older generation, seen through an open capture. Any thread.
class DeviceControl final : public IMediaDeviceControl {
public:
    DeviceControl(std::shared_ptr<CaptureCore> core, std::shared_ptr<SimulatedCamera> camera, OlderControl control);

    MediaDeviceControlCapabilities Capabilities() const override;
    bool TrySetValue(double value) override;
    bool TryGetValue(double& value) const override;
    bool TrySetAuto(bool on) override;
    bool TryGetAuto(bool& on) const override;

private:
    template <typename Work> auto call(const char* operation, Json::Value arguments, Work work) const;

    const std::shared_ptr<CaptureCore> _core;
    const std::shared_ptr<SimulatedCamera> _camera;
    const OlderControl _control;
};

} // namespace Platform::Simulated
