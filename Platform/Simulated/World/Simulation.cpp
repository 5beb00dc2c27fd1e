#include "Platform/Simulated/World/Simulation.h"

#include <utility>

namespace Platform::Simulated {

std::shared_ptr<const Scenario> Simulation::scenario() const {
    std::lock_guard lock(_mutex);
    return _scenario;
}

std::shared_ptr<SimulatedCamera> Simulation::camera(const std::u16string& deviceId) {
    std::lock_guard lock(_mutex);
    return cameraLocked(deviceId);
}

std::shared_ptr<SimulatedCamera> Simulation::cameraLocked(const std::u16string& deviceId) {
    auto& camera = _cameras[deviceId];
    if (!camera)
        camera = std::make_shared<SimulatedCamera>(deviceId, Shared::Strand::create(_pool));
    return camera;
}

void Simulation::configureCameras() {
    std::map<std::u16string, std::u16string> plugged; // device ids and names
    for (const GroupDefinition& group : _scenario->groups)
        for (const SourceDefinition& source : group.sources)
            plugged.emplace(source.device.id, source.device.name);
    for (const auto& [deviceId, name] : plugged)
        cameraLocked(deviceId);
    static const auto standard = std::make_shared<const CameraDefinition>();
    for (const auto& [deviceId, camera] : _cameras) {
        const auto described = _scenario->cameras.find(deviceId);
        const auto present = plugged.find(deviceId);
        const bool isPlugged = present != plugged.end();
        camera->configure(described != _scenario->cameras.end() ? partOf(_scenario, described->second) : standard,
                          isPlugged ? present->second : std::u16string(), isPlugged);
    }
}

void Simulation::takeOver(Scenario scenario) {
    // Released without the lock: the last handle to an observer may be among them.
    std::vector<std::shared_ptr<ScenarioObserver>> observers;
    std::lock_guard lock(_mutex);
    _journal.moveTo(scenario.journal);
    const auto before = std::exchange(_scenario, std::make_shared<const Scenario>(std::move(scenario)));
    configureCameras();
    std::erase_if(_observers, [](const auto& observer) { return observer.expired(); });
    for (const auto& weak : _observers)
        if (auto observer = weak.lock())
            observers.push_back(std::move(observer));
    for (const auto& observer : observers)
        observer->reportChanges(*before, *_scenario);
}

void Simulation::attach(const std::shared_ptr<ScenarioObserver>& observer) {
    std::lock_guard lock(_mutex);
    _observers.push_back(observer);
    observer->reportAll(*_scenario);
}

} // namespace Platform::Simulated
