#pragma once

#include "Platform/Interface/AsyncOperation.h"

#include <cstdint>
#include <memory>

namespace Platform {

/// The sensor's sensitivity as an ISO speed. Any thread; every member may raise.
class IIsoSpeedControl {
public:
    virtual ~IIsoSpeedControl() = default;

    virtual bool Supported() const = 0;
    virtual bool Auto() const = 0;
    virtual std::uint32_t Min() const = 0;
    virtual std::uint32_t Max() const = 0;
    virtual std::uint32_t Step() const = 0;
    virtual std::uint32_t Value() const = 0;
    virtual IAsyncAction SetValueAsync(std::uint32_t value) = 0;
};
using IsoSpeedControl = std::shared_ptr<IIsoSpeedControl>;

} // namespace Platform
