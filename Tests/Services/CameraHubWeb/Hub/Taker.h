#pragma once

#include "Services/CameraHubWeb/Hub/HubAccess.h"
#include "Tests/Services/CameraHubWeb/Hub/StandInHub.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace CameraHubWeb {

/// For a hub that is looked at all the time, and waited for until a test hangs.
inline HubAccess::Settings settingsFor(const StandInHub& hub) {
    HubAccess::Settings settings;
    settings.address = hub.address();
    settings.lookEvery = std::chrono::milliseconds(10);
    settings.callTime = std::chrono::hours(1);
    settings.idleTime = std::chrono::hours(1);
    settings.returnTime = std::chrono::hours(1);
    return settings;
}

/// What has been told and answered so far. Any thread.
class Taker {
public:
    explicit Taker(const HubAccess::Settings& settings)
        : _access(
              std::make_unique<HubAccess>(settings, HubAccess::Observer{[this](const HubState& state) {
                                                                            const std::lock_guard lock(_mutex);
                                                                            _states.push_back(state);
                                                                        },
                                                                        [this](const std::vector<QueueEntry>& queue) {
                                                                            const std::lock_guard lock(_mutex);
                                                                            _queues.push_back(queue);
                                                                        }})) {}

    HubAccess& access() { return *_access; }

    /// Ends it.
    void end() { _access.reset(); }

    std::uint64_t take(const std::string& uid, const std::string& ticket = "", const std::string& origin = "") {
        return take(TakeRequest{{uid, std::chrono::milliseconds(20)}, origin, ticket});
    }

    void takeWithSettle(const std::string& uid, std::chrono::milliseconds settle) {
        take(TakeRequest{{uid, std::chrono::milliseconds(20), settle}, "", ""});
    }

    bool hasResult(const std::string& ticket = "") const {
        const std::lock_guard lock(_mutex);
        return _results.contains(ticket);
    }

    /// Waits for it.
    TakeResult result(const std::string& ticket = "") {
        EXPECT_TRUE(waitUntil([&] { return hasResult(ticket); })) << ticket;
        const std::lock_guard lock(_mutex);
        return std::move(_results.extract(ticket).mapped());
    }

    TakeResult takeNow(const std::string& uid) {
        take(uid);
        return result();
    }

    /// The tickets as they were answered.
    std::vector<std::string> order() const {
        const std::lock_guard lock(_mutex);
        return _order;
    }

    std::vector<HubState> states() const {
        const std::lock_guard lock(_mutex);
        return _states;
    }

    bool waitUntilReachable(bool isReachable = true) const {
        return waitUntil([&] { return !states().empty() && states().back().isReachable == isReachable; });
    }

    std::vector<QueueEntry> lastQueue() const {
        const std::lock_guard lock(_mutex);
        return _queues.empty() ? std::vector<QueueEntry>{} : _queues.back();
    }

    bool isAtWork() const {
        const auto queue = _access->queue();
        return !queue.empty() && queue.front().place == 0;
    }

    /// Of all queues that were told, the steps of what was at work, none twice in a row.
    std::vector<TakeStep> stepsTold() const {
        const std::lock_guard lock(_mutex);
        std::vector<TakeStep> steps;
        for (const auto& queue : _queues)
            if (!queue.empty() && queue.front().place == 0 && (steps.empty() || steps.back() != queue.front().step))
                steps.push_back(queue.front().step);
        return steps;
    }

    bool waitForStep(TakeStep step) const {
        return waitUntil([&] {
            const auto queue = _access->queue();
            return !queue.empty() && queue.front().step == step;
        });
    }

private:
    std::uint64_t take(TakeRequest request) {
        const std::string ticket = request.ticket;
        return _access->take(std::move(request), [this, ticket](TakeResult result) {
            const std::lock_guard lock(_mutex);
            _order.push_back(ticket);
            _results.insert_or_assign(ticket, std::move(result));
        });
    }

    mutable std::mutex _mutex;
    std::vector<HubState> _states;
    std::vector<std::vector<QueueEntry>> _queues;
    std::vector<std::string> _order;
    std::map<std::string, TakeResult> _results;
    std::unique_ptr<HubAccess> _access;
};

inline bool isTaken(const TakeResult& result) { return std::holds_alternative<TakenStill>(result); }

/// Whether it is a failure of that kind, whose detail has the text in it.
inline testing::AssertionResult isFailure(const TakeResult& result, TakeFailureKind kind,
                                          const std::string& text = "") {
    const auto* const failure = std::get_if<TakeFailure>(&result);
    if (failure == nullptr)
        return testing::AssertionFailure() << "a still was taken";
    if (failure->kind == kind && !failure->detail.empty() && failure->detail.find(text) != std::string::npos)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "kind " << static_cast<int>(failure->kind) << ": " << failure->detail;
}

} // namespace CameraHubWeb
