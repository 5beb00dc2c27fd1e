#pragma once

#include "Platform/Interface/DeviceInformation.h"

#include <functional>
#include <memory>

namespace Platform {

class IDeviceWatcher;
using DeviceWatcher = std::shared_ptr<IDeviceWatcher>;

/// Reports the devices that match a selector. Handlers run on threads of the platform: those of one
/// device in order and one at a time, those of different devices possibly at the same time. They
/// return a result code and throw nothing. Subscribe before Start.
///
/// The watcher may be destroyed at any moment and from any thread, one of its own handlers included;
/// a handler that is running then goes on to its end.
class IDeviceWatcher {
public:
    using DeviceHandler = std::function<winrt::hresult(const DeviceWatcher&, const DeviceInformation&)>;
    using UpdateHandler = std::function<winrt::hresult(const DeviceWatcher&, const DeviceInformationUpdate&)>;
    using PlainHandler = std::function<winrt::hresult(const DeviceWatcher&)>;

    virtual ~IDeviceWatcher() = default;

    virtual void Added(DeviceHandler handler) = 0;
    virtual void Updated(UpdateHandler handler) = 0;
    virtual void Removed(UpdateHandler handler) = 0;
    /// Runs once, after the devices that were present at Start have been reported.
    virtual void EnumerationCompleted(PlainHandler handler) = 0;
    virtual void Stopped(PlainHandler handler) = 0;

    /// Reports the devices that are present through Added, and from then on every change. Raises if
    /// watching is not possible.
    virtual void Start() = 0;
};

} // namespace Platform
