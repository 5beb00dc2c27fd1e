#include "Tests/RealDrivers/UsbCamera/Controls.h"

#include <algorithm>

namespace UsbCamera {
namespace {

// Bits of the automatic exposure modes.
constexpr std::uint32_t Manual = 1;
constexpr std::uint32_t AperturePriority = 8;

// Of the request error code control.
constexpr std::uint8_t ErrorCodeSelector = 2;
constexpr std::uint8_t WrongState = 2;
constexpr std::uint8_t OutOfRange = 4;
constexpr std::uint8_t InvalidControl = 6;

// Of GET_INFO.
constexpr std::uint8_t CanGet = 1;
constexpr std::uint8_t CanSet = 2;
constexpr std::uint8_t DisabledByAutomatic = 4;

} // namespace

Controls::Controls(const CameraModel& model, Sensor& sensor, Script& script)
    : _sensor(sensor), _script(script),
      _controls{
          {"exposure_auto", Number::CameraTerminal, 2, 1, 0, 0, Manual | AperturePriority, AperturePriority,
           AperturePriority},
          {"exposure", Number::CameraTerminal, 4, 4, model.exposureMin, model.exposureMax, 1, 250, 250},
          {"focus", Number::CameraTerminal, 6, 2, 0, 250, 5, 0, 0},
          {"focus_auto", Number::CameraTerminal, 8, 1, 0, 1, 1, 1, 1},
          {"brightness", Number::ProcessingUnit, 2, 2, 0, 255, 1, 128, 128},
          {"contrast", Number::ProcessingUnit, 3, 2, 0, 255, 1, 32, 32},
          {"white_balance", Number::ProcessingUnit, 10, 2, 2800, 6500, 10, 4600, 4600},
          {"white_balance_auto", Number::ProcessingUnit, 11, 1, 0, 1, 1, 1, 1},
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
        return value("exposure_auto") != Manual;
    if (control.name == "focus" || control.name == "white_balance")
        return value(control.name + "_auto") != 0;
    return false;
}

std::uint8_t Controls::info(const Control& control) const {
    return CanGet | CanSet | (isAutomatic(control) ? DisabledByAutomatic : std::uint8_t{0});
}

std::optional<std::uint32_t> Controls::answer(std::uint8_t request, const Control& control) const {
    switch (request) {
    case ClassRequest::GetCurrent:
        return control.name == "exposure" && isAutomatic(control) ? _sensor.exposure() : control.current;
    case ClassRequest::GetMinimum:
        return control.min;
    case ClassRequest::GetMaximum:
        return control.max;
    case ClassRequest::GetResolution:
        return control.resolution;
    case ClassRequest::GetDefault:
        return control.initial;
    default:
        return std::nullopt;
    }
}

std::optional<Bytes> Controls::get(std::uint8_t request, std::uint8_t unit, std::uint8_t selector) {
    if (unit == 0 && selector == ErrorCodeSelector)
        return Bytes{_lastError};
    const Control* const control = find(unit, selector);
    if (control == nullptr) {
        refuse(InvalidControl);
        return std::nullopt;
    }
    if (request == ClassRequest::GetInfo)
        return Bytes{info(*control)};
    if (request == ClassRequest::GetLength)
        return Bytes{static_cast<std::uint8_t>(control->size), 0};
    if (request == ClassRequest::GetCurrent)
        _script.happened("get-" + control->name);
    const auto number = answer(request, *control);
    if (!number) {
        refuse(InvalidControl);
        return std::nullopt;
    }
    Bytes bytes;
    append(bytes, *number, control->size);
    return bytes;
}

bool Controls::set(std::uint8_t unit, std::uint8_t selector, const Bytes& bytes) {
    Control* const control = find(unit, selector);
    if (control == nullptr)
        return refuse(InvalidControl);
    const std::uint32_t number = numberAt(bytes, 0, control->size);
    if (const std::uint8_t code = _script.refusalOf(control->name); code != 0) {
        _script.happened("refused-" + control->name, number);
        return refuse(code);
    }
    if (isAutomatic(*control))
        return refuse(WrongState);
    const bool isMode = control->name == "exposure_auto";
    if (isMode ? number != Manual && number != AperturePriority : number < control->min || number > control->max)
        return refuse(OutOfRange);
    _script.happened("set-" + control->name, number);
    // What the automatic has come to stays when it is switched off.
    if (isMode && number == Manual)
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
    state.exposure = value("exposure_auto") == Manual ? value("exposure") : _sensor.exposure();
    state.autoExposure = value("exposure_auto") != Manual;
    state.autoFocus = value("focus_auto") != 0;
    state.autoWhiteBalance = value("white_balance_auto") != 0;
    _sensor.set(state);
}

} // namespace UsbCamera
