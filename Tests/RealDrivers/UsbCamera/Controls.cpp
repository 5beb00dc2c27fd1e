#include "Tests/RealDrivers/UsbCamera/Controls.h"

#include <algorithm>

namespace UsbCamera {
namespace {

// Bits of the automatic exposure modes.
constexpr std::uint32_t manual = 1;
constexpr std::uint32_t aperturePriority = 8;

// Of the request error code control.
constexpr std::uint8_t errorCodeSelector = 2;
constexpr std::uint8_t wrongState = 2;
constexpr std::uint8_t outOfRange = 4;
constexpr std::uint8_t invalidControl = 6;

// Of GET_INFO.
constexpr std::uint8_t canGet = 1;
constexpr std::uint8_t canSet = 2;
constexpr std::uint8_t disabledByAutomatic = 4;

} // namespace

Controls::Controls(const CameraModel& model, Sensor& sensor, Script& script)
    : _sensor(sensor), _script(script),
      _controls{
          {"exposure_auto", Number::cameraTerminal, 2, 1, 0, 0, manual | aperturePriority, aperturePriority,
           aperturePriority},
          {"exposure", Number::cameraTerminal, 4, 4, model.exposureMin, model.exposureMax, 1, 250, 250},
          {"focus", Number::cameraTerminal, 6, 2, 0, 250, 5, 0, 0},
          {"focus_auto", Number::cameraTerminal, 8, 1, 0, 1, 1, 1, 1},
          {"brightness", Number::processingUnit, 2, 2, 0, 255, 1, 128, 128},
          {"contrast", Number::processingUnit, 3, 2, 0, 255, 1, 32, 32},
          {"white_balance", Number::processingUnit, 10, 2, 2800, 6500, 10, 4600, 4600},
          {"white_balance_auto", Number::processingUnit, 11, 1, 0, 1, 1, 1, 1},
      } {}

Controls::Control* Controls::find(std::uint8_t unit, std::uint8_t selector) {
    const auto found = std::find_if(_controls.begin(), _controls.end(), [&](const Control& control) {
        return control.unit == unit && control.selector == selector;
    });
    return found != _controls.end() ? &*found : nullptr;
}

std::uint32_t Controls::value(const std::string& name) const {
    return std::find_if(_controls.begin(), _controls.end(), [&](const Control& c) { return c.name == name; })->current;
}

bool Controls::isAutomatic(const Control& control) const {
    if (control.name == "exposure")
        return value("exposure_auto") != manual;
    if (control.name == "focus" || control.name == "white_balance")
        return value(control.name + "_auto") != 0;
    return false;
}

std::uint8_t Controls::info(const Control& control) const {
    return canGet | canSet | (isAutomatic(control) ? disabledByAutomatic : std::uint8_t{0});
}

std::optional<std::uint32_t> Controls::answer(std::uint8_t request, const Control& control) const {
    switch (request) {
    case ClassRequest::getCurrent:
        return control.name == "exposure" && isAutomatic(control) ? _sensor.exposure() : control.current;
    case ClassRequest::getMinimum:
        return control.min;
    case ClassRequest::getMaximum:
        return control.max;
    case ClassRequest::getResolution:
        return control.resolution;
    case ClassRequest::getDefault:
        return control.initial;
    default:
        return std::nullopt;
    }
}

std::optional<Bytes> Controls::get(std::uint8_t request, std::uint8_t unit, std::uint8_t selector) {
    if (unit == 0 && selector == errorCodeSelector)
        return Bytes{_lastError};
    const Control* const control = find(unit, selector);
    if (control == nullptr) {
        refuse(invalidControl);
        return std::nullopt;
    }
    if (request == ClassRequest::getInfo)
        return Bytes{info(*control)};
    if (request == ClassRequest::getLength)
        return Bytes{static_cast<std::uint8_t>(control->size), 0};
    if (request == ClassRequest::getCurrent)
        _script.happened("get-" + control->name);
    const auto number = answer(request, *control);
    if (!number) {
        refuse(invalidControl);
        return std::nullopt;
    }
    Bytes bytes;
    append(bytes, *number, control->size);
    return bytes;
}

bool Controls::set(std::uint8_t unit, std::uint8_t selector, const Bytes& bytes) {
    Control* const control = find(unit, selector);
    if (control == nullptr)
        return refuse(invalidControl);
    const std::uint32_t number = numberAt(bytes, 0, control->size);
    if (const std::uint8_t code = _script.refusalOf(control->name); code != 0) {
        _script.happened("refused-" + control->name, number);
        return refuse(code);
    }
    if (isAutomatic(*control))
        return refuse(wrongState);
    const bool isMode = control->name == "exposure_auto";
    if (isMode ? number != manual && number != aperturePriority : number < control->min || number > control->max)
        return refuse(outOfRange);
    _script.happened("set-" + control->name, number);
    // What the automatic has come to stays when it is switched off.
    if (isMode && number == manual)
        for (Control& other : _controls)
            if (other.name == "exposure")
                other.current = _sensor.exposure();
    control->current = number;
    _lastError = 0;
    tellSensor();
    return true;
}

bool Controls::refuse(std::uint8_t code) {
    _lastError = code;
    return false;
}

void Controls::tellSensor() {
    FrameState state;
    state.exposure = value("exposure_auto") == manual ? value("exposure") : _sensor.exposure();
    state.autoExposure = value("exposure_auto") != manual;
    state.autoFocus = value("focus_auto") != 0;
    state.autoWhiteBalance = value("white_balance_auto") != 0;
    _sensor.set(state);
}

} // namespace UsbCamera
