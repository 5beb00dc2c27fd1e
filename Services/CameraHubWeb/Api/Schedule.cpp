#include "Services/CameraHubWeb/Api/Schedule.h"

namespace CameraHubWeb {

Schedule::Schedule() : _thread([this] { run(); }) {}

Schedule::~Schedule() {
    {
        const std::lock_guard lock(_mutex);
        _isEnding = true;
    }
    _changed.notify_all();
    _thread.join();
}

void Schedule::at(Time time, std::function<void()> function) {
    {
        const std::lock_guard lock(_mutex);
        _waiting.emplace(time, std::move(function));
    }
    _changed.notify_all();
}

void Schedule::run() {
    std::unique_lock lock(_mutex);
    while (!_isEnding) {
        if (_waiting.empty()) {
            _changed.wait(lock);
            continue;
        }
        const Time next = _waiting.begin()->first;
        if (std::chrono::steady_clock::now() < next) {
            _changed.wait_until(lock, next);
            continue;
        }
        std::function<void()> function = std::move(_waiting.begin()->second);
        _waiting.erase(_waiting.begin());
        lock.unlock();
        function();
        function = nullptr; // what it holds may be of any kind: it goes without the lock
        lock.lock();
    }
}

} // namespace CameraHubWeb
