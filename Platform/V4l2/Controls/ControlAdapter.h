#pragma once

#include "Platform/Interface/MediaDeviceControl.h"
#include "Platform/V4l2/Controls/ControlMapping.h"
#include "Platform/V4l2/Controls/KernelControls.h"

#include <optional>

namespace Platform::V4l2 {

/// One setting of the older generation on the kernel's controls, made for one operation. A camera that is gone or does
/// not answer raises. The camera's thread.
class ControlAdapter {
public:
    ControlAdapter(KernelControls& controls, const ControlMapping& mapping);

    MediaDeviceControlCapabilities capabilities();

    /// Turns the automatic off first. False where the camera refuses, and for what is no number.
    bool setValue(double value);
    std::optional<double> value();

    /// Turning off keeps the value that the automatic has found. False where the camera refuses or has no such mode.
    bool setAuto(bool on);
    std::optional<bool> isAuto();

private:
    std::optional<std::int32_t> autoValue(bool on);

    KernelControls& _controls;
    const ControlMapping& _mapping;
    const std::optional<KernelControl> _value;
    const std::optional<KernelControl> _auto;
};

} // namespace Platform::V4l2
