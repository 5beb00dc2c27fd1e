#pragma once

#include "Platform/Interface/AsyncOperation.h"

#include <memory>

namespace Platform {

/// What the focus is left to: a way of focusing by itself, or the value set by hand.
enum class FocusPreset { Auto = 0, Manual = 1, AutoMacro = 2, AutoNormal = 3, AutoInfinity = 4, AutoHyperfocal = 5 };

/// Focus in the newer generation. Any thread. Every member raises the errors of the capture's state (see
/// IMediaCapture). Where the camera lacks the control only Supported is to be relied on: Preset may raise
/// illegalMethodCall or give a value without a meaning, and setting fails.
class IFocusControl {
public:
    virtual ~IFocusControl() = default;

    /// Whether the camera has the control; the hub then leaves the older one alone.
    virtual bool Supported() const = 0;

    /// The preset in force.
    virtual FocusPreset Preset() const = 0;

    /// The preset is in force when the operation has ended; the lens may still move.
    virtual IAsyncAction SetPresetAsync(FocusPreset preset) = 0;
};
using FocusControl = std::shared_ptr<IFocusControl>;

} // namespace Platform
