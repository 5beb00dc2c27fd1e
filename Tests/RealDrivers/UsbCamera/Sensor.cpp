#include "Tests/RealDrivers/UsbCamera/Sensor.h"

#include <algorithm>

namespace UsbCamera {
namespace {

constexpr std::uint32_t sceneExposure = 250; // 100 us; what the automatic comes to
constexpr std::uint32_t firstExposure = 20;

} // namespace

Sensor::Sensor(const CameraModel& model) : _model(model) {
    _state.exposure = firstExposure;
    _state.autoExposure = _state.autoFocus = _state.autoWhiteBalance = true;
    _wanted = _state;
}

void Sensor::set(const FrameState& wanted) {
    _wanted = wanted;
    _changes.push_back({_state.number + 1 + _model.latency, wanted});
}

FrameState Sensor::next() {
    ++_state.number;
    while (!_changes.empty() && _changes.front().fromFrame <= _state.number) {
        const std::uint32_t number = _state.number;
        _state = _changes.front().state;
        _state.number = number;
        _changes.pop_front();
    }
    if (_state.autoExposure) {
        const auto missing = static_cast<std::int32_t>(sceneExposure) - static_cast<std::int32_t>(_state.exposure);
        const std::int32_t part = missing / 4 != 0 ? missing / 4 : missing;
        _state.exposure = static_cast<std::uint32_t>(static_cast<std::int32_t>(_state.exposure) + part);
    }
    return _state;
}

std::chrono::microseconds Sensor::interval() const {
    const std::chrono::microseconds regular(1'000'000 / _model.rate);
    return std::max(regular, std::chrono::microseconds(_state.exposure * 100));
}

} // namespace UsbCamera
