#pragma once

namespace Platform::Simulated {

struct Scenario;

/// Who is told what the scenario in force has become. Any thread. Called by the simulation, which holds its lock
/// meanwhile: an observer queues what it has to say, and calls nothing of the simulation.
class ScenarioObserver {
public:
    virtual ~ScenarioObserver() = default;

    /// Once, at the start.
    virtual void reportAll(const Scenario& scenario) = 0;

    virtual void reportChanges(const Scenario& before, const Scenario& now) = 0;
};

} // namespace Platform::Simulated
