#pragma once

#include "Platform/Interface/DeviceInformation.h"

#include <functional>
#include <memory>

namespace Platform {

class IDeviceWatcher;
using DeviceWatcher = std::shared_ptr<IDeviceWatcher>;

/// Reports the devices that match a selector. Any thread.
///
/// Handlers, too, run on any thread: those of one device in order and one at a time, those of different devices
/// possibly at the same time. A handler may take its time, and may call the platform. It returns a result code, which
/// nobody looks at, and throws nothing. Each kind of event has one handler, the one set last; an event without a
/// handler is lost, so subscribe before Start.
///
/// The watcher may be released at any moment, by one of its own handlers too: what runs goes on to its end, and nothing
/// runs after it.
class IDeviceWatcher {
public:
    /// Gets the watcher and the device that has come; neither is null.
    using DeviceHandler = std::function<winrt::hresult(const DeviceWatcher&, const DeviceInformation&)>;

    /// Gets the watcher and what has become of a device that Added reported; neither is null.
    using UpdateHandler = std::function<winrt::hresult(const DeviceWatcher&, const DeviceInformationUpdate&)>;

    /// Gets the watcher alone, never null: the event is about no device.
    using PlainHandler = std::function<winrt::hresult(const DeviceWatcher&)>;

    virtual ~IDeviceWatcher() = default;

    /// A device is there: FromIdAsync finds its group by the Id, or fails with why it cannot be opened.
    virtual void Added(DeviceHandler handler) = 0;

    /// Something of a device changed that it keeps its identity with. The Id is the one that Added reported.
    virtual void Updated(UpdateHandler handler) = 0;

    /// A device has gone. The Id is the one that Added reported; a device that comes back is added anew, under the
    /// same Id.
    virtual void Removed(UpdateHandler handler) = 0;

    /// Runs once, after the handlers of the devices that were present at Start have ended.
    virtual void EnumerationCompleted(PlainHandler handler) = 0;

    /// May never run: nothing stops a watcher but its release.
    virtual void Stopped(PlainHandler handler) = 0;

    /// Reports the devices that are present through Added, and from then on every change; returns without waiting for
    /// handlers. Raises illegalMethodCall on a watcher that has been started, and what the system says where watching
    /// is not possible; it may then be tried again.
    virtual void Start() = 0;
};

} // namespace Platform
