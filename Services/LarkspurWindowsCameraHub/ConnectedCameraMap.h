#pragma once

#include "Services/LarkspurWindowsCameraHub/ConnectedCamera.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

/// The cameras that are open at this moment, by uid. It keeps none of them open: the connections do. The
/// entry of a camera that has closed stays, expired, until its uid is opened again. Any thread.
class ConnectedCameraMap {
public:
    /// The open camera of that uid, or null.
    std::shared_ptr<ConnectedCamera> find(const std::string& uid);

    /// The open camera of that uid; opens it if nobody has it open. Raises the platform's errors, and then
    /// leaves the map as it was.
    std::shared_ptr<ConnectedCamera> getOrCreate(const std::string& uid, const FoundCamera& foundCamera);

private:
    std::shared_ptr<ConnectedCamera> findLocked(const std::string& uid) const;

    std::map<std::string, std::weak_ptr<ConnectedCamera>> cameras;
    std::mutex mutex;
};
