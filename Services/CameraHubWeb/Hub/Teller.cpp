#include "Services/CameraHubWeb/Hub/Teller.h"

namespace CameraHubWeb {

void Teller::start() {
    if (_tell)
        _thread = std::thread([this] { run(); });
}

void Teller::wake() {
    const std::lock_guard lock(_mutex);
    _hasNews = true;
    _changed.notify_all();
}

void Teller::stop() {
    {
        const std::lock_guard lock(_mutex);
        _isToStop = true;
        _changed.notify_all();
    }
    if (_thread.joinable())
        _thread.join();
}

void Teller::run() {
    std::unique_lock lock(_mutex);
    while (true) {
        _changed.wait(lock, [this] { return _isToStop || _hasNews; });
        if (_isToStop)
            return;
        _hasNews = false;
        lock.unlock();
        _tell();
        lock.lock();
    }
}

} // namespace CameraHubWeb
