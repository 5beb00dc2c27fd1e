#pragma once

#include "Platform/Interface/AsyncOperation.h"

#include <memory>

namespace Platform {

/// What the white balance is left to: the camera, the value set by hand, or the light of that name.
enum class ColorTemperaturePreset {
    Auto = 0,
    Manual = 1,
    Cloudy = 2,
    Daylight = 3,
    Flash = 4,
    Fluorescent = 5,
    Tungsten = 6,
    Candlelight = 7
};

/// White balance in the newer generation. Any thread. Every member raises the errors of the capture's state (see
/// IMediaCapture). Where the camera lacks the control only Supported is to be relied on: Preset may raise
/// illegalMethodCall or give a value without a meaning, and setting fails.
class IWhiteBalanceControl {
public:
    virtual ~IWhiteBalanceControl() = default;

    /// Whether the camera has the control; the hub then leaves the older one alone.
    virtual bool Supported() const = 0;

    /// The preset in force.
    virtual ColorTemperaturePreset Preset() const = 0;

    /// The preset is in force when the operation has ended.
    virtual IAsyncAction SetPresetAsync(ColorTemperaturePreset preset) = 0;
};
using WhiteBalanceControl = std::shared_ptr<IWhiteBalanceControl>;

} // namespace Platform
