#pragma once

#include "Framework/CXX/Common/Clock.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

/// A clock that records what is asked of it and shortens it. Any thread.
class FakeClock final : public Halden::Clock {
public:
    using Duration = std::chrono::milliseconds;

    struct Call {
        enum class Kind { Sleep, Deadline };
        Kind kind;
        Duration duration; ///< as asked for, not as waited

        bool operator==(const Call&) const = default;
    };

    /// As a divisor of sleeps: they don't wait at all.
    static constexpr int returnAtOnce = 0;

    /// What is really waited is the duration divided by these. Deadlines stay real by default, so that
    /// a slow build doesn't run into a limit that its test isn't about.
    explicit FakeClock(int sleepDivisor = returnAtOnce, int deadlineDivisor = 1)
        : _sleepDivisor(sleepDivisor), _deadlineDivisor(deadlineDivisor) {}

    void sleepFor(Duration duration) override {
        record({Call::Kind::Sleep, duration});
        if (_sleepDivisor != returnAtOnce)
            std::this_thread::sleep_for(std::chrono::microseconds(duration) / _sleepDivisor);
    }

    std::chrono::steady_clock::time_point deadlineAfter(Duration limit) override {
        record({Call::Kind::Deadline, limit});
        return std::chrono::steady_clock::now() + std::chrono::microseconds(limit) / _deadlineDivisor;
    }

    /// Everything asked for so far, in order.
    std::vector<Call> calls() const {
        const std::lock_guard lock(_mutex);
        return _calls;
    }

    std::vector<Duration> sleeps() const { return durations(Call::Kind::Sleep); }
    std::vector<Duration> deadlines() const { return durations(Call::Kind::Deadline); }

    void clear() {
        const std::lock_guard lock(_mutex);
        _calls.clear();
    }

private:
    void record(Call call) {
        const std::lock_guard lock(_mutex);
        _calls.push_back(call);
    }

    std::vector<Duration> durations(Call::Kind kind) const {
        std::vector<Duration> found;
        for (const Call& call : calls())
            if (call.kind == kind)
                found.push_back(call.duration);
        return found;
    }

    const int _sleepDivisor;
    const int _deadlineDivisor;
    mutable std::mutex _mutex;
    std::vector<Call> _calls;
};

/// Puts a clock in the process's place for a scope, then brings the real one back.
class ScopedClock {
public:
    explicit ScopedClock(std::shared_ptr<Halden::Clock> clock) { Halden::setClockForTesting(std::move(clock)); }
    ~ScopedClock() { Halden::setClockForTesting(nullptr); }
    ScopedClock(const ScopedClock&) = delete;
    ScopedClock& operator=(const ScopedClock&) = delete;
};
