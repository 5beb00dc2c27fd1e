#pragma once

#include "Platform/Interface/AsyncOperation.h"

#include <memory>

namespace Platform {

enum class FocusPreset { Auto = 0, Manual = 1, AutoMacro = 2, AutoNormal = 3, AutoInfinity = 4, AutoHyperfocal = 5 };

/// Focus in the newer generation. Any thread; every member may raise.
class IFocusControl {
public:
    virtual ~IFocusControl() = default;

    virtual bool Supported() const = 0;
    virtual FocusPreset Preset() const = 0;
    virtual IAsyncAction SetPresetAsync(FocusPreset preset) = 0;
};
using FocusControl = std::shared_ptr<IFocusControl>;

} // namespace Platform
