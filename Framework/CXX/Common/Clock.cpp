#include "Framework/CXX/Common/Clock.h"

#include <mutex>
#include <thread>

namespace Halden {

namespace {

class SteadyClock final : public Clock {
public:
    void sleepFor(std::chrono::milliseconds duration) override { std::this_thread::sleep_for(duration); }

    std::chrono::steady_clock::time_point deadlineAfter(std::chrono::milliseconds limit) override {
        return std::chrono::steady_clock::now() + limit;
    }
};

struct InstalledClock {
    std::mutex mutex;
    std::shared_ptr<Clock> clock = std::make_shared<SteadyClock>();
};

// Never destroyed: platform threads may still ask for the clock while the process ends.
InstalledClock& installedClock() {
    static auto* const installed = new InstalledClock;
    return *installed;
}

} // namespace

std::shared_ptr<Clock> currentClock() {
    InstalledClock& installed = installedClock();
    const std::lock_guard lock(installed.mutex);
    return installed.clock;
}

void setClockForTesting(std::shared_ptr<Clock> clock) {
    if (!clock)
        clock = std::make_shared<SteadyClock>();
    InstalledClock& installed = installedClock();
    const std::lock_guard lock(installed.mutex);
    installed.clock.swap(clock);
}

} // namespace Halden
