#pragma once

#include "Platform/Shared/DeviceWatcherBase.h"
#include "Platform/Simulated/World/Simulation.h"

#include <memory>

namespace Platform::Simulated {

/// Reports the watched devices of the scenario's groups. Any thread.
class Watcher final : public Shared::DeviceWatcherBase, public ScenarioObserver {
public:
    explicit Watcher(std::shared_ptr<Simulation> simulation);

private:
    void startWatching() override;
    void aboutToReport(Shared::DeviceEvent event, const std::u16string& deviceId) override;
    void reportAll(const Scenario& scenario) override;
    /// A group whose watched device has another id than before counts as gone and new.
    void reportChanges(const Scenario& before, const Scenario& now) override;

    const std::shared_ptr<Simulation> _simulation;
};

} // namespace Platform::Simulated
