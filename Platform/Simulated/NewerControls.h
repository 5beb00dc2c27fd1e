#pragma once

#include "Platform/Interface/ExposureCompensationControl.h"
#include "Platform/Interface/ExposureControl.h"
#include "Platform/Interface/FocusControl.h"
#include "Platform/Interface/IsoSpeedControl.h"
#include "Platform/Interface/WhiteBalanceControl.h"
#include "Platform/Simulated/Session/CaptureCore.h"

#include <memory>
#include <utility>

// The controls of the newer generation, seen through an open capture. Setting one that the camera does not
// have fails.

namespace Platform::Simulated {

/// What they have in common: the capture and its camera.
class NewerControl {
public:
    NewerControl(std::shared_ptr<CaptureCore> core, std::shared_ptr<SimulatedCamera> camera)
        : _core(std::move(core)), _camera(std::move(camera)) {}

protected:
    /// The settings; raises unless the capture is open and the camera there.
    CameraControls& controls(const char* operation) const;

    /// An asynchronous call that sets something: `isSupported` and `set` get the settings.
    template <typename IsSupported, typename Set>
    IAsyncAction setAsync(const char* operation, Json::Value argument, IsSupported isSupported, Set set) const;

private:
    const std::shared_ptr<CaptureCore> _core;
    const std::shared_ptr<SimulatedCamera> _camera;
};

class SimulatedExposureControl final : public IExposureControl, private NewerControl {
public:
    using NewerControl::NewerControl;

    bool Supported() const override;
    bool Auto() const override;
    TimeSpan Min() const override;
    TimeSpan Max() const override;
    TimeSpan Step() const override;
    TimeSpan Value() const override;
    IAsyncAction SetAutoAsync(bool on) override;
    IAsyncAction SetValueAsync(TimeSpan value) override;
};

class SimulatedFocusControl final : public IFocusControl, private NewerControl {
public:
    using NewerControl::NewerControl;

    bool Supported() const override;
    FocusPreset Preset() const override;
    IAsyncAction SetPresetAsync(FocusPreset preset) override;
};

class SimulatedWhiteBalanceControl final : public IWhiteBalanceControl, private NewerControl {
public:
    using NewerControl::NewerControl;

    bool Supported() const override;
    ColorTemperaturePreset Preset() const override;
    IAsyncAction SetPresetAsync(ColorTemperaturePreset preset) override;
};

class SimulatedIsoSpeedControl final : public IIsoSpeedControl, private NewerControl {
public:
    using NewerControl::NewerControl;

    bool Supported() const override;
    bool Auto() const override;
    std::uint32_t Min() const override;
    std::uint32_t Max() const override;
    std::uint32_t Step() const override;
    std::uint32_t Value() const override;
    IAsyncAction SetValueAsync(std::uint32_t value) override;
};

class SimulatedExposureCompensationControl final : public IExposureCompensationControl, private NewerControl {
public:
    using NewerControl::NewerControl;

    bool Supported() const override;
    float Value() const override;
};

} // namespace Platform::Simulated
