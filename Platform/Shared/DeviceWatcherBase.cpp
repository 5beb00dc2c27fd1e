#include "Platform/Shared/DeviceWatcherBase.h"

#include <utility>

namespace Platform::Shared {

DeviceWatcherBase::DeviceWatcherBase(std::shared_ptr<WorkerPool> pool)
    : _pool(std::move(pool)), _events(EventQueue::create(_pool)) {}

void DeviceWatcherBase::Added(DeviceHandler handler) {
    std::lock_guard lock(_mutex);
    _handlers.added = std::move(handler);
}

void DeviceWatcherBase::Updated(UpdateHandler handler) {
    std::lock_guard lock(_mutex);
    _handlers.updated = std::move(handler);
}

void DeviceWatcherBase::Removed(UpdateHandler handler) {
    std::lock_guard lock(_mutex);
    _handlers.removed = std::move(handler);
}

void DeviceWatcherBase::EnumerationCompleted(PlainHandler handler) {
    std::lock_guard lock(_mutex);
    _handlers.enumerationCompleted = std::move(handler);
}

void DeviceWatcherBase::Stopped(PlainHandler) {}

void DeviceWatcherBase::Start() {
    {
        std::lock_guard lock(_mutex);
        if (std::exchange(_started, true))
            throw winrt::hresult_error(winrt::result::illegalMethodCall, u"The watcher has been started already.");
    }
    try {
        startWatching();
    } catch (...) {
        std::lock_guard lock(_mutex);
        _started = false;
        throw;
    }
}

void DeviceWatcherBase::aboutToReport(DeviceEvent, const std::u16string&) {}

/// A copy, so that a handler runs without the lock.
template <typename Handler> Handler DeviceWatcherBase::handlerOf(Handler Handlers::* handler) {
    std::lock_guard lock(_mutex);
    return _handlers.*handler;
}

void DeviceWatcherBase::deliver(const std::u16string& deviceId, EventQueue::Event event) {
    std::lock_guard lock(_mutex);
    const bool initial = !_enumerated;
    if (initial)
        ++_initialEvents;
    _events->post(deviceId, [weak = weak_from_this(), event = std::move(event), initial] {
        const auto self = weak.lock();
        if (!self)
            return;
        event();
        if (initial)
            self->initialEventEnded();
    });
}

void DeviceWatcherBase::reportAdded(const DeviceInformation& device) {
    const std::u16string id = device->Id();
    // `this`, here and below, is kept alive by deliver while the task runs.
    deliver(id, [this, id, device] {
        aboutToReport(DeviceEvent::Added, id);
        if (const auto handler = handlerOf(&Handlers::added))
            handler(shared_from_this(), device);
    });
}

void DeviceWatcherBase::reportUpdated(const DeviceInformationUpdate& update) {
    reportUpdate(DeviceEvent::Updated, &Handlers::updated, update);
}

void DeviceWatcherBase::reportRemoved(const DeviceInformationUpdate& update) {
    reportUpdate(DeviceEvent::Removed, &Handlers::removed, update);
}

void DeviceWatcherBase::reportUpdate(DeviceEvent event, UpdateHandler Handlers::* handler,
                                     const DeviceInformationUpdate& update) {
    const std::u16string id = update->Id();
    deliver(id, [this, event, handler, id, update] {
        aboutToReport(event, id);
        if (const auto function = handlerOf(handler))
            function(shared_from_this(), update);
    });
}

void DeviceWatcherBase::reportEnumerationCompleted() {
    _pool->postWhenFree([pool = _pool, weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->initialEventEnded();
    });
    std::lock_guard lock(_mutex);
    _enumerated = true;
}

void DeviceWatcherBase::initialEventEnded() {
    {
        std::lock_guard lock(_mutex);
        if (--_initialEvents > 0)
            return;
    }
    if (const auto handler = handlerOf(&Handlers::enumerationCompleted))
        handler(shared_from_this());
}

} // namespace Platform::Shared
