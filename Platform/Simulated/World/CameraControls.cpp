#include "Platform/Simulated/World/CameraControls.h"

#include "Platform/Interface/TimeSpan.h"
#include "Platform/Simulated/World/ControlGrid.h"

#include <cmath>

namespace Platform::Simulated {
namespace {

constexpr double ticksInASecond = TimeSpan::period::den;

double exponentOfTicks(std::int64_t ticks) { return std::log2(static_cast<double>(ticks) / ticksInASecond); }

double nearestPoint(const ValueControlDefinition& control, double value) {
    return ControlGrid{static_cast<double>(control.min), static_cast<double>(control.max),
                       static_cast<double>(control.step)}
        .nearestPoint(value);
}

/// Takes over a definition with its values if it differs from the one before.
template <typename Definition> void renew(Definition& known, Definition& inForce, const Definition& definition) {
    if (known == definition)
        return;
    known = definition;
    inForce = definition;
}

} // namespace

const char* nameOf(OlderControl control) {
    constexpr std::array<const char*, olderControls.size()> names{"Exposure", "Focus", "WhiteBalance", "Brightness",
                                                                  "Contrast"};
    return names.at(static_cast<std::size_t>(control));
}

void CameraControls::configure(const CameraDefinition& camera) {
    std::lock_guard lock(_mutex);
    configureOlder(OlderControl::Exposure, camera.exposure);
    configureOlder(OlderControl::Focus, camera.focus);
    configureOlder(OlderControl::WhiteBalance, camera.whiteBalance);
    configureOlder(OlderControl::Brightness, camera.brightness);
    configureOlder(OlderControl::Contrast, camera.contrast);
    configureExposureControl(camera.exposureControl);
    _neutralExposure = camera.capture.neutralExposure;
    switchAutomaticExposure();
    renew(_isoDefinition, _iso, camera.isoSpeedControl);
    renew(_focusDefinition, _focus, camera.focusControl);
    renew(_whiteBalanceDefinition, _whiteBalance, camera.whiteBalanceControl);
    _compensation = camera.exposureCompensationControl;
}

void CameraControls::configureOlder(OlderControl control, const ControlDefinition& definition) {
    Older& state = older(control);
    if (state.definition == definition)
        return;
    state = {definition, definition.value, definition.automatic};
    if (control == OlderControl::Exposure)
        _exposure.set(definition.value);
}

void CameraControls::configureExposureControl(const ValueControlDefinition& definition) {
    if (_exposureDefinition == definition)
        return;
    _exposureDefinition = definition;
    _exposureAuto = definition.automatic;
    _ticks = definition.value;
    if (!older(OlderControl::Exposure).definition.supported)
        _exposure.set(exponentOfTicks(definition.value));
}

/// After any change of the automatic flags or of the neutral exposure.
void CameraControls::switchAutomaticExposure() {
    const Older& exposure = older(OlderControl::Exposure);
    const bool on =
        (exposure.definition.supported && exposure.automatic) || (_exposureDefinition.supported && _exposureAuto);
    _exposure.automatic(on, _neutralExposure);
    if (on)
        _ticks.reset();
}

MediaDeviceControlCapabilities CameraControls::capabilities(OlderControl control) const {
    std::lock_guard lock(_mutex);
    const ControlDefinition& definition = older(control).definition;
    return {definition.supported, definition.autoModeSupported, definition.min, definition.max, definition.step};
}

bool CameraControls::trySetValue(OlderControl control, double value) {
    std::lock_guard lock(_mutex);
    Older& state = older(control);
    const ControlDefinition& definition = state.definition;
    if (!definition.supported || definition.refusesSetValue || std::isnan(value))
        return false;
    state.value =
        definition.latch.value_or(ControlGrid{definition.min, definition.max, definition.step}.nearestPoint(value));
    if (control == OlderControl::Exposure) {
        _exposure.set(state.value);
        _ticks.reset();
    }
    return true;
}

bool CameraControls::tryGetValue(OlderControl control, double& value) const {
    std::lock_guard lock(_mutex);
    const Older& state = older(control);
    if (!state.definition.supported || state.definition.refusesGetValue)
        return false;
    value = control == OlderControl::Exposure ? _exposure.now() : state.value;
    return true;
}

bool CameraControls::trySetAuto(OlderControl control, bool on) {
    std::lock_guard lock(_mutex);
    Older& state = older(control);
    const ControlDefinition& definition = state.definition;
    if (!definition.supported || definition.refusesSetAuto || (on && !definition.autoModeSupported))
        return false;
    state.automatic = on;
    if (control == OlderControl::Exposure) {
        _exposureAuto = on;
        switchAutomaticExposure();
    }
    return true;
}

bool CameraControls::tryGetAuto(OlderControl control, bool& on) const {
    std::lock_guard lock(_mutex);
    const Older& state = older(control);
    if (!state.definition.supported || state.definition.refusesGetAuto)
        return false;
    on = state.automatic;
    return true;
}

std::int64_t CameraControls::ticksInForce() const {
    if (_ticks)
        return *_ticks;
    const double ticks = std::round(std::exp2(_exposure.now()) * ticksInASecond);
    return static_cast<std::int64_t>(nearestPoint(_exposureDefinition, ticks));
}

ValueControlDefinition CameraControls::exposureControl() const {
    std::lock_guard lock(_mutex);
    ValueControlDefinition control = _exposureDefinition;
    control.automatic = _exposureAuto;
    control.value = ticksInForce();
    return control;
}

void CameraControls::setExposureAuto(bool on) {
    std::lock_guard lock(_mutex);
    _exposureAuto = on;
    Older& exposure = older(OlderControl::Exposure);
    exposure.automatic = on && exposure.definition.autoModeSupported;
    switchAutomaticExposure();
}

void CameraControls::setExposureTicks(std::int64_t ticks) {
    std::lock_guard lock(_mutex);
    const auto latched = static_cast<std::int64_t>(nearestPoint(_exposureDefinition, static_cast<double>(ticks)));
    _exposure.set(exponentOfTicks(latched));
    if (!_exposure.isAutomatic())
        _ticks = latched;
}

ValueControlDefinition CameraControls::isoSpeedControl() const {
    std::lock_guard lock(_mutex);
    return _iso;
}

void CameraControls::setIsoSpeed(std::int64_t speed) {
    std::lock_guard lock(_mutex);
    _iso.value = static_cast<std::int64_t>(nearestPoint(_iso, static_cast<double>(speed)));
    _iso.automatic = false;
}

PresetControlDefinition CameraControls::focusControl() const {
    std::lock_guard lock(_mutex);
    return _focus;
}

void CameraControls::setFocusPreset(int preset) {
    std::lock_guard lock(_mutex);
    _focus.preset = preset;
}

PresetControlDefinition CameraControls::whiteBalanceControl() const {
    std::lock_guard lock(_mutex);
    return _whiteBalance;
}

void CameraControls::setWhiteBalancePreset(int preset) {
    std::lock_guard lock(_mutex);
    _whiteBalance.preset = preset;
}

CompensationDefinition CameraControls::exposureCompensationControl() const {
    std::lock_guard lock(_mutex);
    return _compensation;
}

std::optional<double> CameraControls::exposure() const {
    std::lock_guard lock(_mutex);
    if (!older(OlderControl::Exposure).definition.supported)
        return std::nullopt;
    return _exposure.now();
}

} // namespace Platform::Simulated
