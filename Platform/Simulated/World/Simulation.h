#pragma once

#include "Platform/Shared/WorkerPool.h"
#include "Platform/Simulated/Scenario/Scenario.h"
#include "Platform/Simulated/World/Journal.h"
#include "Platform/Simulated/World/ScenarioObserver.h"
#include "Platform/Simulated/World/SimulatedCamera.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Platform::Simulated {

/// The simulated world: the scenario in force, its cameras, and who watches them. All objects of the
/// platform share it and keep it alive. Any thread.
class Simulation {
public:
    Simulation() : _pool(std::make_shared<Shared::WorkerPool>()) {}

    const std::shared_ptr<Shared::WorkerPool>& pool() const { return _pool; }
    Journal& journal() { return _journal; }
    std::shared_ptr<const Scenario> scenario() const;

    /// The hardware of a device, also of one that no scenario has named yet.
    std::shared_ptr<SimulatedCamera> camera(const std::u16string& deviceId);

    /// Puts a scenario in force and tells the observers what has changed. Raises, and changes nothing, if the
    /// scenario's journal cannot be opened.
    void takeOver(Scenario scenario);

    /// Reports the devices that there are to the observer, and from then on every change, for as long as it lives.
    void attach(const std::shared_ptr<ScenarioObserver>& observer);

private:
    std::shared_ptr<SimulatedCamera> cameraLocked(const std::u16string& deviceId);
    void configureCameras();

    const std::shared_ptr<Shared::WorkerPool> _pool;
    Journal _journal;
    mutable std::mutex _mutex; // guards all below
    std::shared_ptr<const Scenario> _scenario = std::make_shared<const Scenario>();
    std::map<std::u16string, std::shared_ptr<SimulatedCamera>> _cameras; // by device id
    std::vector<std::weak_ptr<ScenarioObserver>> _observers;
};

/// A part of a scenario that keeps the whole of it alive.
template <typename Part>
std::shared_ptr<const Part> partOf(std::shared_ptr<const Scenario> scenario, const Part& part) {
    return {std::move(scenario), &part};
}

} // namespace Platform::Simulated
