#pragma once

#include "Platform/Shared/Strand.h"
#include "Platform/Simulated/Picture/SceneRenderer.h"
#include "Platform/Simulated/Scenario/Scenario.h"
#include "Platform/Simulated/World/CameraControls.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace Platform::Simulated {

/// The hardware behind one device: it stays the same when it is unplugged and comes back, and all captures
/// of the device share it. Any thread.
class SimulatedCamera {
public:
    SimulatedCamera(std::u16string deviceId, std::shared_ptr<Shared::Strand> strand);

    /// Takes over what a scenario says of the camera. It is plugged in when a source has its device.
    void configure(std::shared_ptr<const CameraDefinition> definition, std::u16string name, bool isPlugged);

    const std::u16string& deviceId() const { return _deviceId; }
    /// On which the camera's asynchronous operations end.
    const std::shared_ptr<Shared::Strand>& strand() const { return _strand; }
    CameraControls& controls() { return _controls; }
    /// To be used on the strand alone.
    SceneRenderer& renderer() { return _renderer; }

    std::shared_ptr<const CameraDefinition> definition() const;
    std::u16string name() const;
    bool isPlugged() const;
    /// How often the camera has gone: what began before it went does not end after it came back.
    std::uint64_t timesUnplugged() const;
    /// Counts the stills of the camera, from 1.
    std::uint64_t nextFrameNumber();

private:
    const std::u16string _deviceId;
    const std::shared_ptr<Shared::Strand> _strand;
    CameraControls _controls;
    SceneRenderer _renderer;
    mutable std::mutex _mutex; // guards all below
    std::shared_ptr<const CameraDefinition> _definition;
    std::u16string _name;
    bool _isPlugged = false;
    std::uint64_t _timesUnplugged = 0;
    std::uint64_t _lastFrameNumber = 0;
};

} // namespace Platform::Simulated
