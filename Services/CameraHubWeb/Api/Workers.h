#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace CameraHubWeb {

/// Threads for what takes the processor long, pictures above all, so that nobody else waits for it. Any thread.
class Workers {
public:
    explicit Workers(unsigned threads);

    /// Waits for what is being done; drops what has not begun.
    ~Workers();

    Workers(const Workers&) = delete;
    Workers& operator=(const Workers&) = delete;

    /// Begun in the order of the calls. What it throws, as memory is lacking, is dropped with it.
    void post(std::function<void()> task);

private:
    void run();

    std::mutex _mutex;
    std::condition_variable _changed;
    std::deque<std::function<void()>> _tasks;
    bool _isEnding = false;
    std::vector<std::thread> _threads; // the last ones: they use the others
};

} // namespace CameraHubWeb
