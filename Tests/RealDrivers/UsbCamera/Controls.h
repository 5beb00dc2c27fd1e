#pragma once

#include "Tests/RealDrivers/UsbCamera/ByteWriter.h"
#include "Tests/RealDrivers/UsbCamera/Script.h"
#include "Tests/RealDrivers/UsbCamera/Sensor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace UsbCamera {

/// The requests of the video class, as the wire has them.
namespace ClassRequest {
constexpr std::uint8_t setCurrent = 0x01;
constexpr std::uint8_t getCurrent = 0x81;
constexpr std::uint8_t getMinimum = 0x82;
constexpr std::uint8_t getMaximum = 0x83;
constexpr std::uint8_t getResolution = 0x84;
constexpr std::uint8_t getLength = 0x85;
constexpr std::uint8_t getInfo = 0x86;
constexpr std::uint8_t getDefault = 0x87;
} // namespace ClassRequest

/// The controls of the camera terminal and of the processing unit.
class Controls {
public:
    Controls(const CameraModel& model, Sensor& sensor, Script& script);

    /// The answer to a GET request; nothing for a refusal.
    std::optional<Bytes> get(std::uint8_t request, std::uint8_t unit, std::uint8_t selector);
    /// Whether the value has been taken.
    bool set(std::uint8_t unit, std::uint8_t selector, const Bytes& value);

private:
    struct Control {
        std::string name;
        std::uint8_t unit;
        std::uint8_t selector;
        unsigned size; // bytes
        std::uint32_t min;
        std::uint32_t max;
        std::uint32_t resolution;
        std::uint32_t initial;
        std::uint32_t current;
    };

    Control* find(std::uint8_t unit, std::uint8_t selector);
    std::uint32_t value(const std::string& name) const;
    bool isAutomatic(const Control& control) const;
    std::uint8_t info(const Control& control) const;
    std::optional<std::uint32_t> answer(std::uint8_t request, const Control& control) const;
    bool refuse(std::uint8_t code);
    void tellSensor();

    Sensor& _sensor;
    Script& _script;
    std::vector<Control> _controls;
    std::uint8_t _lastError = 0;
};

} // namespace UsbCamera
