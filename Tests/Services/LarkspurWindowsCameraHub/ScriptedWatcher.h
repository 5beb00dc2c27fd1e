#pragma once

#include "Platform/Interface/DeviceWatcher.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A watcher that reports what the test says, on the test's own thread. Its handlers stay after Start.
class ScriptedWatcher final : public Platform::IDeviceWatcher, public std::enable_shared_from_this<ScriptedWatcher> {
public:
    void Added(DeviceHandler handler) override { subscribe("Added", _added, std::move(handler)); }
    void Updated(UpdateHandler handler) override { subscribe("Updated", _updated, std::move(handler)); }
    void Removed(UpdateHandler handler) override { subscribe("Removed", _removed, std::move(handler)); }
    void EnumerationCompleted(PlainHandler handler) override {
        subscribe("EnumerationCompleted", _enumerationCompleted, std::move(handler));
    }
    void Stopped(PlainHandler handler) override { subscribe("Stopped", _stopped, std::move(handler)); }
    void Start() override { _calls.emplace_back("Start"); }

    /// The subscriptions and the start, in order.
    const std::vector<std::string>& calls() const { return _calls; }

    // What the handler returns.
    winrt::hresult added(const Platform::DeviceInformation& device) { return _added(shared_from_this(), device); }
    winrt::hresult updated(const Platform::DeviceInformationUpdate& update) {
        return _updated(shared_from_this(), update);
    }
    winrt::hresult removed(const Platform::DeviceInformationUpdate& update) {
        return _removed(shared_from_this(), update);
    }
    winrt::hresult enumerationCompleted() { return _enumerationCompleted(shared_from_this()); }
    winrt::hresult stopped() { return _stopped(shared_from_this()); }

private:
    template <typename Handler> void subscribe(const std::string& event, Handler& slot, Handler handler) {
        _calls.push_back(event);
        slot = std::move(handler);
    }

    std::vector<std::string> _calls;
    DeviceHandler _added;
    UpdateHandler _updated;
    UpdateHandler _removed;
    PlainHandler _enumerationCompleted;
    PlainHandler _stopped;
};
