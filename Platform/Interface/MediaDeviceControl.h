#pragma once

#include <memory>

namespace Platform {

struct MediaDeviceControlCapabilities {
    bool Supported = false;
    bool AutoModeSupported = false;
    double Min = 0.0;
    double Max = 0.0;
    double Step = 0.0; // distance of the grid points, counted from Min; 0: the value cannot be changed
};

/// One setting of the older generation. The unit is the control's own: exposure is in log2 of
/// seconds. The Try operations return false where the device refuses. Any thread; every member may
/// raise.
class IMediaDeviceControl {
public:
    virtual ~IMediaDeviceControl() = default;

    virtual MediaDeviceControlCapabilities Capabilities() const = 0;

    /// The device decides what becomes of a value beside its range or grid.
    virtual bool TrySetValue(double value) = 0;
    virtual bool TryGetValue(double& value) const = 0;
    virtual bool TrySetAuto(bool on) = 0;
    virtual bool TryGetAuto(bool& on) const = 0;
};
using MediaDeviceControl = std::shared_ptr<IMediaDeviceControl>;

} // namespace Platform
