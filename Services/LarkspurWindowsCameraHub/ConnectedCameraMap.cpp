#include "Services/LarkspurWindowsCameraHub/ConnectedCameraMap.h"

std::shared_ptr<ConnectedCamera> ConnectedCameraMap::find(const std::string& uid) {
    std::lock_guard lock(mutex);
    return findLocked(uid);
}

std::shared_ptr<ConnectedCamera> ConnectedCameraMap::getOrCreate(const std::string& uid,
                                                                 const FoundCamera& foundCamera) {
    std::lock_guard lock(mutex);
    if (auto open = findLocked(uid))
        return open;
    const auto camera = std::make_shared<ConnectedCamera>(foundCamera);
    cameras[uid] = camera;
    return camera;
}

std::shared_ptr<ConnectedCamera> ConnectedCameraMap::findLocked(const std::string& uid) const {
    const auto entry = cameras.find(uid);
    return entry == cameras.end() ? nullptr : entry->second.lock();
}
