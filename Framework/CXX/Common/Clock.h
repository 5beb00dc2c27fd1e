#pragma once

#include <chrono>
#include <memory>

namespace Halden {

/// Every fixed wait of the hub goes through here, so that a test can shorten or record it. Any thread.
class Clock {
public:
    virtual ~Clock() = default;

    /// Blocks the calling thread for at least that long, on the steady clock.
    virtual void sleepFor(std::chrono::milliseconds duration) = 0;

    /// The moment at which a time limit of that length, beginning now, has run out.
    virtual std::chrono::steady_clock::time_point deadlineAfter(std::chrono::milliseconds limit) = 0;
};

/// The process's clock: the real one, unless a test has put another in its place.
std::shared_ptr<Clock> currentClock();

/// For tests. Null brings the real clock back.
void setClockForTesting(std::shared_ptr<Clock> clock);

} // namespace Halden
