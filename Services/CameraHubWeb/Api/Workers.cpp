#include "Services/CameraHubWeb/Api/Workers.h"

#include <exception>
#include <utility>

namespace CameraHubWeb {

Workers::Workers(unsigned threads) {
    for (unsigned i = 0; i < threads; ++i)
        _threads.emplace_back([this] { run(); });
}

Workers::~Workers() {
    {
        const std::lock_guard lock(_mutex);
        _isEnding = true;
    }
    _changed.notify_all();
    for (std::thread& thread : _threads)
        thread.join();
}

void Workers::post(std::function<void()> task) {
    {
        const std::lock_guard lock(_mutex);
        _tasks.push_back(std::move(task));
    }
    _changed.notify_one();
}

void Workers::run() {
    std::unique_lock lock(_mutex);
    for (;;) {
        _changed.wait(lock, [this] { return _isEnding || !_tasks.empty(); });
        if (_isEnding)
            return;
        std::function<void()> task = std::move(_tasks.front());
        _tasks.pop_front();
        lock.unlock();
        try {
            task();
        } catch (const std::exception&) {
        }
        task = nullptr; // what it holds may be of any kind: it goes without the lock
        lock.lock();
    }
}

} // namespace CameraHubWeb
