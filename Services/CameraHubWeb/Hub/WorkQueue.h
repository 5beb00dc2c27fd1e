#pragma once

#include "Services/CameraHubWeb/Hub/TurnQueue.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace CameraHubWeb {

/// The requests that wait and the one at work. Any thread.
class WorkQueue {
public:
    /// `changed` is called without a lock.
    WorkQueue(std::size_t length, std::function<void()> changed) : _length(length), _changed(std::move(changed)) {}

    /// See HubAccess. What finds no room, or comes after the end, is answered before it returns.
    std::uint64_t add(TakeRequest request, std::function<void(TakeResult)> done);
    void giveUp(std::uint64_t number);
    std::vector<QueueEntry> entries() const;

    /// Waits for the next one, which is at work from then on; none at that time, and at the end.
    std::optional<TakeJob> next(std::chrono::steady_clock::time_point until);

    /// Of the one at work.
    void setStep(TakeStep step);
    /// Nothing is at work any more.
    void finish();
    /// When something was at work the last time: now, if something is.
    std::chrono::steady_clock::time_point lastWork() const;

    /// Nothing more is taken, and nothing waited for.
    void end();
    bool hasEnded() const;
    /// What waits still.
    std::vector<TakeJob> takeRest();

private:
    std::optional<TakeFailureKind> put(TakeJob& job);

    const std::size_t _length;
    const std::function<void()> _changed;
    mutable std::mutex _mutex;
    std::condition_variable _hasMore;
    TurnQueue _waiting;
    std::optional<QueueEntry> _atWork;
    std::chrono::steady_clock::time_point _lastWork = std::chrono::steady_clock::time_point::min();
    std::uint64_t _lastNumber = 0;
    bool _hasEnded = false;
};

} // namespace CameraHubWeb
