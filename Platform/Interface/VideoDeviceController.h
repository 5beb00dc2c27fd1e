#pragma once

#include "Platform/Interface/ExposureCompensationControl.h"
#include "Platform/Interface/ExposureControl.h"
#include "Platform/Interface/FocusControl.h"
#include "Platform/Interface/IsoSpeedControl.h"
#include "Platform/Interface/MediaDeviceControl.h"
#include "Platform/Interface/WhiteBalanceControl.h"

#include <memory>

namespace Platform {

/// The settings of an open camera, in two generations. Every control is there, none is null; what the camera lacks
/// says so through Supported. A setting is the camera's: it stays when the capture is closed, and every capture of the
/// camera sees it. Any thread. The members raise nothing themselves; the controls raise the errors of the capture's
/// state at each use (see IMediaCapture).
class IVideoDeviceController {
public:
    virtual ~IVideoDeviceController() = default;

    // The older generation: numbers in the camera's units, with refusals as results.
    virtual MediaDeviceControl Exposure() const = 0;     ///< In log2 of seconds.
    virtual MediaDeviceControl Focus() const = 0;        ///< In the camera's unit.
    virtual MediaDeviceControl WhiteBalance() const = 0; ///< In kelvins, where the camera has a unit.
    virtual MediaDeviceControl Brightness() const = 0;   ///< In the camera's unit; without an automatic on most.
    virtual MediaDeviceControl Contrast() const = 0;     ///< In the camera's unit; without an automatic on most.

    // The newer generation, of which a camera may have any part. The hub prefers it where it is Supported.

    /// A time in ticks of 100 ns: finer than the powers of two of Exposure.
    virtual Platform::ExposureControl ExposureControl() const = 0;

    /// Presets alone: a position of the lens is set through Focus.
    virtual Platform::FocusControl FocusControl() const = 0;

    /// Presets alone: a colour temperature is set through WhiteBalance.
    virtual Platform::WhiteBalanceControl WhiteBalanceControl() const = 0;

    /// The sensitivity, for which the older generation has nothing.
    virtual Platform::IsoSpeedControl IsoSpeedControl() const = 0;

    /// In stops, to be read and not set. The older generation has nothing for it either.
    virtual Platform::ExposureCompensationControl ExposureCompensationControl() const = 0;
};
using VideoDeviceController = std::shared_ptr<IVideoDeviceController>;

} // namespace Platform
