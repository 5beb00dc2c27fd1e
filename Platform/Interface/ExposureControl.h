#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/TimeSpan.h"

#include <memory>

namespace Platform {

/// Exposure in the newer generation, as a time. Any thread; every member may raise.
class IExposureControl {
public:
    virtual ~IExposureControl() = default;

    virtual bool Supported() const = 0;
    virtual bool Auto() const = 0;
    virtual TimeSpan Min() const = 0;
    virtual TimeSpan Max() const = 0;
    virtual TimeSpan Step() const = 0;
    virtual TimeSpan Value() const = 0;
    virtual IAsyncAction SetAutoAsync(bool on) = 0;
    virtual IAsyncAction SetValueAsync(TimeSpan value) = 0;
};
using ExposureControl = std::shared_ptr<IExposureControl>;

} // namespace Platform
