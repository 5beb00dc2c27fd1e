#include "Platform/V4l2/Controls/ControlAdapter.h"

#include "Platform/V4l2/Controls/ExposureScale.h"

#include <algorithm>
#include <cmath>

namespace Platform::V4l2 {
namespace {

bool contains(const std::vector<std::int32_t>& values, std::int32_t value) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

/// What is reported for an exposure that only the camera itself can set: 1/16 s, like no exposure control at all.
constexpr double unknownExposure = -4.0;

} // namespace

ControlAdapter::ControlAdapter(KernelControls& controls, const ControlMapping& mapping)
    : _controls(controls), _mapping(mapping), _value(_controls.find(mapping.valueIds)),
      _auto(_controls.find(mapping.autoIds)) {}

MediaDeviceControlCapabilities ControlAdapter::capabilities() {
    MediaDeviceControlCapabilities capabilities;
    if (_value && _mapping.isExposure) {
        capabilities = ExposureScale::grid(_value->range);
    } else if (_value) {
        capabilities.Min = _value->range.min;
        capabilities.Max = _value->range.max;
        capabilities.Step = std::max(_value->range.step, 1);
    } else if (_mapping.isExposure) {
        capabilities.Min = capabilities.Max = unknownExposure;
    }
    if (_value && _value->isReadOnly)
        capabilities.Step = 0.0;
    capabilities.Supported = _value || _auto;
    capabilities.AutoModeSupported = autoValue(true) && autoValue(false);
    return capabilities;
}

bool ControlAdapter::setValue(double value) {
    if (!_value || std::isnan(value))
        return false;
    if (isAuto().value_or(false) && !setAuto(false))
        return false;
    return _controls.write(*_value, _value->range.nearest(_mapping.isExposure ? ExposureScale::unitsOf(value) : value));
}

std::optional<double> ControlAdapter::value() {
    if (!_value)
        return std::nullopt;
    const auto units = _controls.read(*_value);
    if (!units)
        return std::nullopt;
    return _mapping.isExposure ? ExposureScale::exponentOf(*units) : *units;
}

bool ControlAdapter::setAuto(bool on) {
    if (!_auto)
        return !on; // what is not there is off
    const auto target = autoValue(on);
    if (!target)
        return false;
    if (isAuto() == on)
        return true;
    if (on || !_value || _value->isReadOnly)
        return _controls.write(*_auto, *target);
    const auto found = _controls.read(*_value);
    if (!_controls.write(*_auto, *target))
        return false;
    // Some cameras go back to the value that was set by hand before.
    return !found || _controls.read(*_value) == found || _controls.write(*_value, found.value());
}

std::optional<bool> ControlAdapter::isAuto() {
    if (!_auto)
        return std::nullopt;
    const auto mode = _controls.read(*_auto);
    if (!mode)
        return std::nullopt;
    return contains(_mapping.onValues, *mode);
}

/// The first of the modes that this camera offers.
std::optional<std::int32_t> ControlAdapter::autoValue(bool on) {
    if (!_auto)
        return std::nullopt;
    for (const std::int32_t value : on ? _mapping.onValues : _mapping.offValues)
        if (_controls.hasMenuEntry(*_auto, value))
            return value;
    return std::nullopt;
}

} // namespace Platform::V4l2
