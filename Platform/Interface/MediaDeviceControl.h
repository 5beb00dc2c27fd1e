#pragma once

#include <memory>

namespace Platform {

/// What a control can do. Where it is not Supported the rest says nothing.
struct MediaDeviceControlCapabilities {
    bool Supported = false;         ///< Whether the camera has the value, its automatic or both.
    bool AutoModeSupported = false; ///< Whether the automatic can be turned on and off.
    double Min = 0.0;               ///< The lowest value, in the control's unit.
    double Max = 0.0;               ///< The highest value, in the control's unit; Min where there is one alone.
    double Step = 0.0;              ///< Distance of the grid points, counted from Min; 0: the value cannot be changed.
};

/// One setting of the older generation. Exposure is in log2 of seconds (-4: 1/16 s), the rest in the camera's own
/// units. Any thread. Every member raises the errors of the capture's state (see IMediaCapture); what the camera only
/// refuses, or does not have, is no error but the result false of a Try operation.
class IMediaDeviceControl {
public:
    virtual ~IMediaDeviceControl() = default;

    /// Of the camera as it is now: asked for again before each use.
    virtual MediaDeviceControlCapabilities Capabilities() const = 0;

    /// The device decides what becomes of a value beside its range or grid: read it back. Not-a-number is refused.
    /// Whether an automatic that is on stays on is the platform's too: turn it off first.
    virtual bool TrySetValue(double value) = 0;

    /// The value in force; may be up to half a Step beside the grid. A false result leaves `value` as it was.
    virtual bool TryGetValue(double& value) const = 0;

    /// Where a Supported control has no automatic, turning it off succeeds and turning it on is refused.
    virtual bool TrySetAuto(bool on) = 0;

    /// A false result leaves `on` as it was.
    virtual bool TryGetAuto(bool& on) const = 0;
};
using MediaDeviceControl = std::shared_ptr<IMediaDeviceControl>;

} // namespace Platform
