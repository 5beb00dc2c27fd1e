#pragma once

#include "Platform/Interface/AsyncOperation.h"

#include <memory>

namespace Platform {

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

/// White balance in the newer generation. Any thread; every member may raise.
class IWhiteBalanceControl {
public:
    virtual ~IWhiteBalanceControl() = default;

    virtual bool Supported() const = 0;
    virtual ColorTemperaturePreset Preset() const = 0;
    virtual IAsyncAction SetPresetAsync(ColorTemperaturePreset preset) = 0;
};
using WhiteBalanceControl = std::shared_ptr<IWhiteBalanceControl>;

} // namespace Platform
