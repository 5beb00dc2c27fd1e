#pragma once

#include "Platform/Shared/DeviceWatcherBase.h"
#include "Platform/V4l2/Discovery/DeviceCatalog.h"

#include <memory>
#include <thread>

namespace Platform::V4l2 {

/// Reports cameras that come and go, under the ids of their groups. Its thread, which Start makes, listens to the
/// system and ends with the watcher. Any thread.
class Watcher final : public Shared::DeviceWatcherBase {
public:
    Watcher(std::shared_ptr<Shared::WorkerPool> pool, std::shared_ptr<DeviceLister> lister,
            std::shared_ptr<DeviceCatalog> catalog);
    ~Watcher() override;
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

protected:
    void startWatching() override;

private:
    struct Loop;

    void appeared(const CameraGroup& group) { reportAdded(deviceOf(group)); }
    void vanished(const CameraGroup& group);
    static DeviceInformation deviceOf(const CameraGroup& group);

    const std::shared_ptr<DeviceLister> _lister;
    const std::shared_ptr<DeviceCatalog> _catalog;
    std::shared_ptr<Loop> _loop; // from Start on
    std::thread _thread;
};

} // namespace Platform::V4l2
