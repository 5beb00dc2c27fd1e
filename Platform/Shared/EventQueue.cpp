#include "Platform/Shared/EventQueue.h"

#include <utility>

namespace Platform::Shared {

std::shared_ptr<EventQueue> EventQueue::create(std::shared_ptr<WorkerPool> pool) {
    return std::shared_ptr<EventQueue>(new EventQueue(std::move(pool)));
}

void EventQueue::post(const std::u16string& deviceId, Event event) {
    std::lock_guard lock(_mutex);
    const auto [device, isIdle] = _events.try_emplace(deviceId);
    device->second.push_back(std::move(event));
    if (!isIdle)
        return;
    _ready.push_back(device);
    if (_runners == limit)
        return;
    ++_runners;
    _pool->postWhenFree([self = shared_from_this()] { self->run(); });
}

void EventQueue::run() {
    std::unique_lock lock(_mutex);
    while (!_ready.empty()) {
        const auto device = _ready.front();
        _ready.pop_front();
        Event event = std::move(device->second.front());
        lock.unlock();
        event();
        event = nullptr;
        lock.lock();
        device->second.pop_front();
        if (device->second.empty())
            _events.erase(device);
        else
            _ready.push_back(device);
    }
    --_runners;
}

} // namespace Platform::Shared
