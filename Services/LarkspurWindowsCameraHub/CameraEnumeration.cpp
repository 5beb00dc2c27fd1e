#include "Services/LarkspurWindowsCameraHub/CameraEnumeration.h"

#include "Framework/CXX/Common/Clock.h"
#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <chrono>

using Halden::toUtf8;

/// A device that has just appeared gets this long before it is opened.
constexpr std::chrono::milliseconds settlingTime{500};

/// What the watcher calls for an event: nothing once this object has gone. No exception reaches the
/// platform's thread; a failure becomes the result code.
template <typename... Args> auto CameraEnumeration::delegate(void (CameraEnumeration::*handler)(Args...)) {
    return [weak = weak_from_this(), handler](const Args&... args) -> winrt::hresult {
        const auto self = weak.lock();
        if (!self)
            return winrt::result::ok;
        try {
            ((*self).*handler)(args...);
            return winrt::result::ok;
        } catch (const winrt::hresult_error& error) {
            return error.code();
        } catch (...) {
            return winrt::result::fail;
        }
    };
}

void CameraEnumeration::initialize() {
    try {
        const auto platform = Platform::cameraPlatform();
        watcher = platform->CreateWatcher(platform->GetDeviceSelector());
        watcher->Added(delegate(&CameraEnumeration::Watcher_DeviceAdded));
        watcher->Updated(delegate(&CameraEnumeration::Watcher_DeviceUpdated));
        watcher->Removed(delegate(&CameraEnumeration::Watcher_DeviceRemoved));
        watcher->EnumerationCompleted(delegate(&CameraEnumeration::Watcher_EnumerationCompleted));
        watcher->Stopped(delegate(&CameraEnumeration::Watcher_Stopped));
        watcher->Start();
        watcherStarted = true;
    } catch (const winrt::hresult_error& error) {
        LOG4CXX_ERROR(serviceLogger(), "CameraEnumeration: could not create watcher - " << toUtf8(error.message()));
        watcherStarted = false;
    }
}

std::map<std::string, FoundCamera> CameraEnumeration::getCameras() const {
    std::lock_guard lock(camerasMutex);
    return cameras;
}

std::uint64_t CameraEnumeration::revision() const {
    std::lock_guard lock(camerasMutex);
    return changes;
}

void CameraEnumeration::Watcher_DeviceAdded(Platform::DeviceWatcher, Platform::DeviceInformation device) {
    Halden::currentClock()->sleepFor(settlingTime);
    const auto found = CameraHelper::processDeviceInfo(device);

    std::lock_guard lock(camerasMutex);
    ++changes;
    for (const FoundCamera& camera : found)
        cameras[camera.description.uid] = camera;
    if (!found.empty())
        LOG4CXX_INFO(serviceLogger(), "Device added: " << toUtf8(device->Id()));
}

void CameraEnumeration::Watcher_DeviceUpdated(Platform::DeviceWatcher, Platform::DeviceInformationUpdate update) {
    std::lock_guard lock(camerasMutex);
    const auto known = cameras.find(toUtf8(update->Id()));
    if (known != cameras.end())
        known->second.deviceInformation->Update(update);
}

void CameraEnumeration::Watcher_DeviceRemoved(Platform::DeviceWatcher, Platform::DeviceInformationUpdate update) {
    std::lock_guard lock(camerasMutex);
    const std::string id = toUtf8(update->Id());
    ++changes;
    cameras.erase(id);
    LOG4CXX_INFO(serviceLogger(), "Device removed: " << id);
}

void CameraEnumeration::Watcher_EnumerationCompleted(Platform::DeviceWatcher) {}

void CameraEnumeration::Watcher_Stopped(Platform::DeviceWatcher) {}
