#pragma once

#include "Platform/Interface/DeviceWatcher.h"
#include "Platform/Shared/EventQueue.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

namespace Platform::Shared {

enum class DeviceEvent { Added, Updated, Removed };

/// The delivery of a watcher's events, the same for all platforms: those of one device in order and
/// one at a time, those of different devices side by side as EventQueue limits it, and none once the last handle to the
/// watcher has gone. What the handlers return is ignored. Make it in a std::shared_ptr.
class DeviceWatcherBase : public IDeviceWatcher, public std::enable_shared_from_this<DeviceWatcherBase> {
public:
    void Added(DeviceHandler handler) override;
    void Updated(UpdateHandler handler) override;
    void Removed(UpdateHandler handler) override;
    void EnumerationCompleted(PlainHandler handler) override;
    /// Never runs: nothing stops a watcher but its end.
    void Stopped(PlainHandler handler) override;

    /// Raises illegalMethodCall when the watcher has been started already.
    void Start() final;

protected:
    explicit DeviceWatcherBase(std::shared_ptr<WorkerPool> pool);

    /// Begins to report. Raises where watching is not possible; Start may then be called again.
    virtual void startWatching() = 0;

    /// Runs just before the handler of an event, on the same thread.
    virtual void aboutToReport(DeviceEvent event, const std::u16string& deviceId);

    void reportAdded(const DeviceInformation& device);
    void reportUpdated(const DeviceInformationUpdate& update);
    void reportRemoved(const DeviceInformationUpdate& update);

    /// All devices that were present at the start have been reported.
    void reportEnumerationCompleted();

private:
    struct Handlers {
        DeviceHandler added;
        UpdateHandler updated;
        UpdateHandler removed;
        PlainHandler enumerationCompleted;
    };

    void deliver(const std::u16string& deviceId, EventQueue::Event event);
    void reportUpdate(DeviceEvent event, UpdateHandler Handlers::* handler, const DeviceInformationUpdate& update);
    void initialEventEnded();
    template <typename Handler> Handler handlerOf(Handler Handlers::* handler);

    const std::shared_ptr<WorkerPool> _pool;
    const std::shared_ptr<EventQueue> _events;
    std::mutex _mutex; // guards all below
    Handlers _handlers;
    bool _started = false;
    bool _enumerated = false;
    std::size_t _initialEvents = 1; // under way before the enumeration has completed, and the enumeration itself
};

} // namespace Platform::Shared
