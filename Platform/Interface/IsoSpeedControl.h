#pragma once

#include "Platform/Interface/AsyncOperation.h"

#include <cstdint>
#include <memory>

namespace Platform {

/// The sensor's sensitivity as an ISO speed. Any thread. Every member raises the errors of the capture's state (see
/// IMediaCapture). Where the camera lacks the control only Supported is to be relied on: what reads may raise
/// illegalMethodCall or give values without a meaning, what sets fails.
class IIsoSpeedControl {
public:
    virtual ~IIsoSpeedControl() = default;

    /// Whether the camera has the control; there is none in the older generation.
    virtual bool Supported() const = 0;

    /// Whether the camera sets the speed by itself.
    virtual bool Auto() const = 0;

    /// The lowest speed that can be set.
    virtual std::uint32_t Min() const = 0;

    /// The highest speed that can be set; Min where there is one alone. Not every speed between can be.
    virtual std::uint32_t Max() const = 0;

    /// The smallest distance of two speeds that can be set; 0 where there is one alone.
    virtual std::uint32_t Step() const = 0;

    /// The speed in force. Raises fail where the camera refuses to tell.
    virtual std::uint32_t Value() const = 0;

    /// Goes to the nearest speed that can be set, and turns the automatic off. Fails with fail where the camera
    /// refuses.
    virtual IAsyncAction SetValueAsync(std::uint32_t value) = 0;
};
using IsoSpeedControl = std::shared_ptr<IIsoSpeedControl>;

} // namespace Platform
