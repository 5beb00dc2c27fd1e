#pragma once

#include "Platform/Interface/ExposureControl.h"
#include "Platform/Interface/FocusControl.h"
#include "Platform/Interface/WhiteBalanceControl.h"
#include "Platform/V4l2/Session/CaptureCore.h"

#include <memory>
#include <utility>

namespace Platform::V4l2 {

/// Controls of the newer generation that no camera of this platform has: each says so, and raises for the rest. On a
/// camera that is gone or closed they raise for all.
class AbsentControl {
protected:
    explicit AbsentControl(std::shared_ptr<CaptureCore> core) : _core(std::move(core)) {}
    ~AbsentControl() = default;

    /// Always false.
    bool supported(std::string_view operation) const;
    [[noreturn]] void raise(std::string_view operation) const;

private:
    const std::shared_ptr<CaptureCore> _core;
};

class AbsentExposureControl final : public IExposureControl, AbsentControl {
public:
    explicit AbsentExposureControl(std::shared_ptr<CaptureCore> core) : AbsentControl(std::move(core)) {}

    bool Supported() const override { return supported("ExposureControl.Supported"); }
    bool Auto() const override { raise("ExposureControl.Auto"); }
    TimeSpan Min() const override { raise("ExposureControl.Min"); }
    TimeSpan Max() const override { raise("ExposureControl.Max"); }
    TimeSpan Step() const override { raise("ExposureControl.Step"); }
    TimeSpan Value() const override { raise("ExposureControl.Value"); }
    IAsyncAction SetAutoAsync(bool) override { raise("ExposureControl.SetAutoAsync"); }
    IAsyncAction SetValueAsync(TimeSpan) override { raise("ExposureControl.SetValueAsync"); }
};

class AbsentFocusControl final : public IFocusControl, AbsentControl {
public:
    explicit AbsentFocusControl(std::shared_ptr<CaptureCore> core) : AbsentControl(std::move(core)) {}

    bool Supported() const override { return supported("FocusControl.Supported"); }
    FocusPreset Preset() const override { raise("FocusControl.Preset"); }
    IAsyncAction SetPresetAsync(FocusPreset) override { raise("FocusControl.SetPresetAsync"); }
};

class AbsentWhiteBalanceControl final : public IWhiteBalanceControl, AbsentControl {
public:
    explicit AbsentWhiteBalanceControl(std::shared_ptr<CaptureCore> core) : AbsentControl(std::move(core)) {}

    bool Supported() const override { return supported("WhiteBalanceControl.Supported"); }
    ColorTemperaturePreset Preset() const override { raise("WhiteBalanceControl.Preset"); }
    IAsyncAction SetPresetAsync(ColorTemperaturePreset) override { raise("WhiteBalanceControl.SetPresetAsync"); }
};

} // namespace Platform::V4l2
