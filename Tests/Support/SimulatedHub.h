#pragma once

#include "Platform/Interface/DeviceInformation.h"
#include "Tests/Support/FakeClock.h"
#include "Tests/Support/LogRecorder.h"
#include "Tests/Support/RaisedError.h"
#include "Tests/Support/ScenarioFile.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

/// A device as the watcher reports it, with that id and nothing else. UTF-8.
Platform::DeviceInformation deviceWithId(const std::string& id);

/// Parts of the hub in this process, on simulated cameras that go with the test, with a clock that does not
/// wait. Scenarios are given as members of a scenario object, without its braces.
class SimulatedHub : public testing::Test {
protected:
    SimulatedHub();
    ~SimulatedHub() override;

    /// Another platform from now on, with those cameras and an empty journal.
    void useScenario(const std::string& members);

    /// The same platform's cameras have changed: it follows on its own thread.
    void changeScenario(const std::string& members) const;

    /// What has been logged to that logger itself so far, in order, as "LEVEL text".
    std::vector<std::string> lines(const std::string& logger = "LarkspurWindowsCameraHub.Service") const;

    /// Those of one level, without it.
    std::vector<std::string> linesOf(const std::string& level) const;

    /// The journal so far, as "call arguments"; the ends of asynchronous calls are left out.
    std::vector<std::string> calls() const;

    /// Those of one call, as "arguments".
    std::vector<std::string> callsOf(const std::string& call) const;

    const JournalReader& journal() const { return _journal; }
    FakeClock& clock() { return *_clock; }
    LogRecorder& log() { return _log; }

private:
    static std::string textOf(const std::string& members);

    const ScenarioFile _scenario;
    const JournalReader _journal{_scenario.journal()};
    const std::shared_ptr<FakeClock> _clock = std::make_shared<FakeClock>();
    const ScopedClock _scopedClock{_clock};
    LogRecorder _log{"LarkspurWindowsCameraHub"};
};
