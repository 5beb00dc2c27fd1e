#pragma once

#include <memory>

namespace Platform {

/// The bias that automatic exposure aims for. Any thread. Every member raises the errors of the capture's state (see
/// IMediaCapture).
class IExposureCompensationControl {
public:
    virtual ~IExposureCompensationControl() = default;

    /// Whether the camera has the control; there is none in the older generation.
    virtual bool Supported() const = 0;

    /// In exposure values (stops); above 0 is brighter. Where the camera lacks the control it raises, or gives a value
    /// without a meaning; raises fail where the camera refuses to tell.
    virtual float Value() const = 0;
};
using ExposureCompensationControl = std::shared_ptr<IExposureCompensationControl>;

} // namespace Platform
