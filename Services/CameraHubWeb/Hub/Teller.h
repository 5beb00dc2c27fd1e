#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace CameraHubWeb {

/// Calls a function on a thread of its own when there is news. News that comes during a call leads to one call more.
class Teller {
public:
    /// An empty function is not called.
    explicit Teller(std::function<void()> tell) : _tell(std::move(tell)) {}
    ~Teller() { stop(); }
    Teller(const Teller&) = delete;
    Teller& operator=(const Teller&) = delete;

    /// Once, before anything is told.
    void start();

    /// There is news. Any thread, at any time.
    void wake();

    /// Waits for a call that is under way; there is none after it.
    void stop();

private:
    void run();

    const std::function<void()> _tell;
    std::mutex _mutex;
    std::condition_variable _changed;
    bool _hasNews = false;
    bool _isToStop = false;
    std::thread _thread;
};

} // namespace CameraHubWeb
