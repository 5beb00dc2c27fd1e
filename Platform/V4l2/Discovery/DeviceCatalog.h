#pragma once

#include "Platform/Interface/Guid.h"
#include "Platform/Interface/HresultError.h"
#include "Platform/Shared/WorkerPool.h"
#include "Platform/V4l2/Discovery/NodeDescription.h"
#include "Platform/V4l2/Kernel/DeviceLister.h"
#include "Platform/V4l2/Kernel/SystemCalls.h"

#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Platform::V4l2 {

/// One node of a camera.
struct CameraSource {
    std::u16string id;
    VideoNode node;
    NodeDescription description;
};

/// The nodes of one physical camera, colour first. Its id is the first source's.
struct CameraGroup {
    std::u16string id;
    std::u16string name;
    std::u16string manufacturer; // may be empty
    std::u16string model;        // may be empty
    Guid container;
    std::vector<CameraSource> sources;         // empty where no node can be opened
    std::vector<VideoNode> nodes;              // what the group was made of
    std::optional<winrt::hresult_error> error; // why there are no sources
};
using CameraGroupHandle = std::shared_ptr<const CameraGroup>;

/// The machine's cameras. Opens each new node once, shortly, to see what it is; what it learned holds as long as
/// the system describes the node in the same way. A driver that does not answer costs one call the limit.
/// Any thread.
class DeviceCatalog {
public:
    DeviceCatalog(std::shared_ptr<SystemCalls> calls, std::shared_ptr<DeviceLister> lister,
                  std::shared_ptr<Shared::WorkerPool> pool, std::chrono::milliseconds limit);

    /// All cameras that are there now, also those that cannot be opened, in ascending order of their nodes.
    std::vector<CameraGroupHandle> groups();

private:
    struct KnownNode {
        VideoNode node;
        std::string id;
        bool examined = false;
        std::optional<NodeDescription> description; // nothing for what is no camera
        std::optional<winrt::hresult_error> error;  // of the latest opening
    };

    void refresh(std::vector<VideoNode> nodes);
    void giveId(KnownNode& known) const;
    void examine(KnownNode& known);
    CameraGroupHandle makeGroup(const std::vector<const KnownNode*>& members) const;

    const std::shared_ptr<SystemCalls> _calls;
    const std::shared_ptr<DeviceLister> _lister;
    const std::shared_ptr<Shared::WorkerPool> _pool;
    const std::chrono::milliseconds _limit;
    std::mutex _mutex;                       // guards all below
    std::map<std::string, KnownNode> _known; // by systemPath
};

} // namespace Platform::V4l2
