#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/TimeSpan.h"

#include <memory>

namespace Platform {

/// Exposure in the newer generation, as a time. Any thread. Every member raises the errors of the capture's state (see
/// IMediaCapture). Where the camera lacks the control only Supported is to be relied on: what reads may raise
/// illegalMethodCall or give values without a meaning, what sets fails.
class IExposureControl {
public:
    virtual ~IExposureControl() = default;

    /// Whether the camera has the control; the hub then leaves the older one alone.
    virtual bool Supported() const = 0;

    /// Whether the camera sets the time by itself.
    virtual bool Auto() const = 0;

    /// The shortest time that can be set.
    virtual TimeSpan Min() const = 0;

    /// The longest time that can be set; Min where there is one alone.
    virtual TimeSpan Max() const = 0;

    /// The distance of the times that can be set, counted from Min.
    virtual TimeSpan Step() const = 0;

    /// The time in force, also while the automatic moves it.
    virtual TimeSpan Value() const = 0;

    /// The automatic is on or off when the operation has ended. Off keeps the exposure that was reached.
    virtual IAsyncAction SetAutoAsync(bool on) = 0;

    /// Any value: one outside the range is brought into it, one beside the grid goes to the nearest point. Leaves an
    /// automatic on that is on, which then moves the value on.
    virtual IAsyncAction SetValueAsync(TimeSpan value) = 0;
};
using ExposureControl = std::shared_ptr<IExposureControl>;

} // namespace Platform
