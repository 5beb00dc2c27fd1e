#pragma once

#include "Platform/Interface/MediaDeviceControl.h"
#include "Platform/V4l2/Controls/ControlMapping.h"
#include "Platform/V4l2/Session/CaptureCore.h"

#include <memory>
#include <string_view>
#include <utility>

namespace Platform::V4l2 {

/// One setting of the older generation. The work is done on the camera's thread. Any thread.
class DeviceControl final : public IMediaDeviceControl {
public:
    /// The mapping must outlive the control.
    DeviceControl(std::shared_ptr<CaptureCore> core, const ControlMapping& mapping)
        : _core(std::move(core)), _mapping(&mapping) {}

    MediaDeviceControlCapabilities Capabilities() const override;
    bool TrySetValue(double value) override;
    bool TryGetValue(double& value) const override;
    bool TrySetAuto(bool on) override;
    bool TryGetAuto(bool& on) const override;

private:
    template <typename T, typename Work> T ask(std::string_view operation, Work work) const;
    template <typename Work> bool set(std::string_view operation, Work work);

    const std::shared_ptr<CaptureCore> _core;
    const ControlMapping* const _mapping;
};

} // namespace Platform::V4l2
