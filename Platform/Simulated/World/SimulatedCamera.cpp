#include "Platform/Simulated/World/SimulatedCamera.h"

#include <utility>

namespace Platform::Simulated {

SimulatedCamera::SimulatedCamera(std::u16string deviceId, std::shared_ptr<Shared::Strand> strand)
    : _deviceId(std::move(deviceId)), _strand(std::move(strand)),
      _definition(std::make_shared<const CameraDefinition>()) {}

void SimulatedCamera::configure(std::shared_ptr<const CameraDefinition> definition, std::u16string name,
                                bool isPlugged) {
    _controls.configure(*definition);
    std::lock_guard lock(_mutex);
    _definition = std::move(definition);
    if (isPlugged)
        _name = std::move(name);
    if (std::exchange(_isPlugged, isPlugged) && !isPlugged)
        ++_timesUnplugged;
}

std::shared_ptr<const CameraDefinition> SimulatedCamera::definition() const {
    std::lock_guard lock(_mutex);
    return _definition;
}

std::u16string SimulatedCamera::name() const {
    std::lock_guard lock(_mutex);
    return _name;
}

bool SimulatedCamera::isPlugged() const {
    std::lock_guard lock(_mutex);
    return _isPlugged;
}

std::uint64_t SimulatedCamera::timesUnplugged() const {
    std::lock_guard lock(_mutex);
    return _timesUnplugged;
}

std::uint64_t SimulatedCamera::nextFrameNumber() {
    std::lock_guard lock(_mutex);
    return ++_lastFrameNumber;
}

} // namespace Platform::Simulated
