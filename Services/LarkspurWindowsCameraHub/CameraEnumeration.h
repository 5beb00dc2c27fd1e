#pragma once

#include "Platform/Interface/DeviceWatcher.h"
#include "Services/LarkspurWindowsCameraHub/FoundCamera.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

/// Keeps the usable cameras of the machine, by uid, for as long as it lives. Any thread. The event handlers run on
/// threads of the platform. They hold the object only while they run, and the last of them destroys it if its owner has
/// let go meanwhile.
class CameraEnumeration : public std::enable_shared_from_this<CameraEnumeration> {
public:
    /// Creates and starts the device watcher; to be called once. A platform failure is logged, and the map then stays
    /// empty for good.
    void initialize();

    /// A copy of the map, ascending by the bytes of the uid.
    std::map<std::string, FoundCamera> getCameras() const;

    /// Another number whenever the map may have become another one.
    std::uint64_t revision() const;

    bool isWatcherStarted() const { return watcherStarted; }

private:
    void Watcher_DeviceAdded(Platform::DeviceWatcher sender, Platform::DeviceInformation device);
    void Watcher_DeviceUpdated(Platform::DeviceWatcher sender, Platform::DeviceInformationUpdate update);
    void Watcher_DeviceRemoved(Platform::DeviceWatcher sender, Platform::DeviceInformationUpdate update);
    void Watcher_EnumerationCompleted(Platform::DeviceWatcher sender);
    void Watcher_Stopped(Platform::DeviceWatcher sender);

    template <typename... Args> auto delegate(void (CameraEnumeration::*handler)(Args...));

    mutable std::mutex camerasMutex; // guards cameras, changes
    Platform::DeviceWatcher watcher;
    std::map<std::string, FoundCamera> cameras;
    std::uint64_t changes = 0; // of the map so far
    bool watcherStarted = false;
};
