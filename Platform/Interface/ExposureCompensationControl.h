#pragma once

#include <memory>

namespace Platform {

/// The bias that automatic exposure aims for, in exposure values (stops). Any thread; every member
/// may raise.
class IExposureCompensationControl {
public:
    virtual ~IExposureCompensationControl() = default;

    virtual bool Supported() const = 0;
    virtual float Value() const = 0;
};
using ExposureCompensationControl = std::shared_ptr<IExposureCompensationControl>;

} // namespace Platform
