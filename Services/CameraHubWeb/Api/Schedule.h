#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace CameraHubWeb {

/// Calls functions when their time has come, one after the other on a thread of its own: they must be short. Any
/// thread.
class Schedule {
public:
    using Time = std::chrono::steady_clock::time_point;

    Schedule();

    /// Waits for the one that is being called; drops those whose time has not come.
    ~Schedule();

    Schedule(const Schedule&) = delete;
    Schedule& operator=(const Schedule&) = delete;

    void at(Time time, std::function<void()> function);

private:
    void run();

    std::mutex _mutex;
    std::condition_variable _changed;
    std::multimap<Time, std::function<void()>> _waiting;
    bool _isEnding = false;
    std::thread _thread; // the last one: it uses the others
};

} // namespace CameraHubWeb
