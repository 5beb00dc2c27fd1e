#pragma once

#include "Platform/Interface/ExposureCompensationControl.h"
#include "Platform/Interface/ExposureControl.h"
#include "Platform/Interface/FocusControl.h"
#include "Platform/Interface/IsoSpeedControl.h"
#include "Platform/Interface/MediaDeviceControl.h"
#include "Platform/Interface/WhiteBalanceControl.h"

#include <memory>

namespace Platform {

/// The settings of an open camera, in two generations. Every control is there; what the camera lacks
/// says so through Supported. Any thread.
class IVideoDeviceController {
public:
    virtual ~IVideoDeviceController() = default;

    virtual MediaDeviceControl Exposure() const = 0;
    virtual MediaDeviceControl Focus() const = 0;
    virtual MediaDeviceControl WhiteBalance() const = 0;
    virtual MediaDeviceControl Brightness() const = 0;
    virtual MediaDeviceControl Contrast() const = 0;

    virtual Platform::ExposureControl ExposureControl() const = 0;
    virtual Platform::FocusControl FocusControl() const = 0;
    virtual Platform::WhiteBalanceControl WhiteBalanceControl() const = 0;
    virtual Platform::IsoSpeedControl IsoSpeedControl() const = 0;
    virtual Platform::ExposureCompensationControl ExposureCompensationControl() const = 0;
};
using VideoDeviceController = std::shared_ptr<IVideoDeviceController>;

} // namespace Platform
