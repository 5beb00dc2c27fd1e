#pragma once

#include "Platform/Shared/DeviceWatcherBase.h"
#include "Platform/Simulated/Scenario/Scenario.h"

#include <memory>

namespace Platform::Simulated {

class Simulation;

/// Reports the watched devices of the scenario's groups.
class Watcher final : public Shared::DeviceWatcherBase {
public:
    explicit Watcher(std::shared_ptr<Simulation> simulation);

    /// For the simulation, once, at the start.
    void reportAll(const Scenario& scenario);

    /// For the simulation: what has become of the groups. A group whose watched device has another id
    /// than before counts as gone and new.
    void reportChanges(const Scenario& before, const Scenario& now);

protected:
    void startWatching() override;
    void aboutToReport(Shared::DeviceEvent event, const std::u16string& deviceId) override;

private:
    const std::shared_ptr<Simulation> _simulation;
};

} // namespace Platform::Simulated
