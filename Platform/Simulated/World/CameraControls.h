#pragma once

#include "Platform/Interface/MediaDeviceControl.h"
#include "Platform/Simulated/Scenario/Scenario.h"
#include "Platform/Simulated/World/ExposureInForce.h"

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>

namespace Platform::Simulated {

/// The controls of the older generation.
enum class OlderControl { Exposure, Focus, WhiteBalance, Brightness, Contrast };
constexpr std::array olderControls{OlderControl::Exposure, OlderControl::Focus, OlderControl::WhiteBalance,
                                   OlderControl::Brightness, OlderControl::Contrast};

const char* nameOf(OlderControl control);

/// The settings of one camera's hardware, which all captures of the camera share. Any thread.
///
/// Both generations of the exposure control are two views of one exposure and of one automatic: setting
/// one moves the other, while values from the scenario stand until then.
class CameraControls {
public:
    /// Takes over a scenario's description: what has changed begins with its values, the rest keeps those
    /// that it has.
    void configure(const CameraDefinition& camera);

    MediaDeviceControlCapabilities capabilities(OlderControl control) const;
    bool trySetValue(OlderControl control, double value);
    bool tryGetValue(OlderControl control, double& value) const;
    /// Automatic mode can be switched off, but not on, where the control has none.
    bool trySetAuto(OlderControl control, bool on);
    bool tryGetAuto(OlderControl control, bool& on) const;

    ValueControlDefinition exposureControl() const; // with the values in force
    void setExposureAuto(bool on);
    void setExposureTicks(std::int64_t ticks);

    ValueControlDefinition isoSpeedControl() const; // with the values in force
    /// A fixed speed ends automatic mode.
    void setIsoSpeed(std::int64_t speed);

    PresetControlDefinition focusControl() const;
    void setFocusPreset(int preset);
    PresetControlDefinition whiteBalanceControl() const;
    void setWhiteBalancePreset(int preset);
    CompensationDefinition exposureCompensationControl() const;

    /// Log2 of seconds; none for a camera whose older exposure control is not supported.
    std::optional<double> exposure() const;

private:
    struct Older {
        ControlDefinition definition;
        double value = 0.0; // of exposure: unused, see _exposure
        bool automatic = false;
    };

    Older& older(OlderControl control) { return _older.at(static_cast<std::size_t>(control)); }
    const Older& older(OlderControl control) const { return _older.at(static_cast<std::size_t>(control)); }
    void configureOlder(OlderControl control, const ControlDefinition& definition);
    void configureExposureControl(const ValueControlDefinition& definition);
    void switchAutomaticExposure();
    std::int64_t ticksInForce() const;

    mutable std::mutex _mutex; // guards all below
    std::array<Older, olderControls.size()> _older;
    ValueControlDefinition _exposureDefinition;
    bool _exposureAuto = false;
    std::optional<std::int64_t> _ticks; // none: those of the exposure in force
    ExposureInForce _exposure;
    double _neutralExposure = 0.0;
    ValueControlDefinition _isoDefinition;
    ValueControlDefinition _iso; // with the values in force
    PresetControlDefinition _focusDefinition;
    PresetControlDefinition _focus;
    PresetControlDefinition _whiteBalanceDefinition;
    PresetControlDefinition _whiteBalance;
    CompensationDefinition _compensation;
};

} // namespace Platform::Simulated
