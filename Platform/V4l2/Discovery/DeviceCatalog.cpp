#include "Platform/V4l2/Discovery/DeviceCatalog.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Shared/RunAsync.h"
#include "Platform/V4l2/Discovery/DeviceIdentity.h"
#include "Platform/V4l2/Kernel/DeviceErrors.h"
#include "Platform/V4l2/Kernel/DeviceNode.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace Platform::V4l2 {
namespace {

/// Texts of devices that are no UTF-8 become empty.
std::u16string textOf(const std::string& text) { return Halden::toUtf16(text); }

/// Nodes with the same text belong to one physical device. One parent outside USB may have several devices, which
/// only the driver's own name for the place tells apart.
std::string groupKey(const VideoNode& node, const std::optional<NodeDescription>& description) {
    if (node.usb || !description)
        return node.parentPath;
    return node.parentPath + "\n" + description->bus;
}

int rankOf(const CameraSource& source) {
    switch (source.description.kind) {
    case MediaFrameSourceKind::Color:
        return 0;
    case MediaFrameSourceKind::Infrared:
        return 1;
    case MediaFrameSourceKind::Depth:
        return 2;
    default:
        return 3;
    }
}

} // namespace

DeviceCatalog::DeviceCatalog(std::shared_ptr<SystemCalls> calls, std::shared_ptr<DeviceLister> lister,
                             std::shared_ptr<Shared::WorkerPool> pool, std::chrono::milliseconds limit)
    : _calls(std::move(calls)), _lister(std::move(lister)), _pool(std::move(pool)), _limit(limit) {}

std::vector<CameraGroupHandle> DeviceCatalog::groups() {
    std::lock_guard lock(_mutex);
    refresh(_lister->list());
    std::vector<std::string> order;
    std::map<std::string, std::vector<const KnownNode*>> members;
    for (const auto& [path, known] : _known) {
        if (!known.description && !known.error)
            continue;
        const std::string key = groupKey(known.node, known.description);
        if (members[key].empty())
            order.push_back(key);
        members[key].push_back(&known);
    }
    std::vector<CameraGroupHandle> groups;
    groups.reserve(order.size());
    for (const std::string& key : order)
        groups.push_back(makeGroup(members[key]));
    return groups;
}

void DeviceCatalog::refresh(std::vector<VideoNode> nodes) {
    std::map<std::string, KnownNode> known;
    for (VideoNode& node : nodes) {
        const auto old = _known.find(node.systemPath);
        if (old != _known.end() && old->second.node == node)
            known.insert(_known.extract(old));
    }
    _known = std::move(known);
    for (VideoNode& node : nodes) {
        const std::string path = node.systemPath;
        KnownNode& entry = _known[path];
        if (entry.id.empty()) {
            entry.node = std::move(node);
            giveId(entry);
        }
        if (!entry.examined)
            examine(entry);
    }
}

/// A camera that has come first keeps its id when another one would have the same.
void DeviceCatalog::giveId(KnownNode& known) const {
    const auto isTaken = [this](const std::string& id) {
        return std::any_of(_known.begin(), _known.end(), [&](const auto& entry) { return entry.second.id == id; });
    };
    std::string id = deviceIdOf(known.node);
    if (isTaken(id))
        id = deviceIdWithPlaceOf(known.node);
    if (isTaken(id))
        id += "-at-" + known.node.systemPath;
    known.id = id;
}

void DeviceCatalog::examine(KnownNode& known) {
    known.error.reset();
    const std::string& path = known.node.devicePath;
    // On another thread, which alone waits for a driver that never answers.
    const auto description = Shared::runAsync<std::optional<NodeDescription>>(_pool, [calls = _calls, path] {
        DeviceNode node(calls, path);
        return describeNode(node);
    });
    if (!CompletionFlag::of(description)->waitUntil(std::chrono::steady_clock::now() + _limit)) {
        known.error = deviceError("open", path, ETIMEDOUT);
        known.examined = true; // asking again would only cost the limit again
        return;
    }
    try {
        known.description = description.GetResults();
        known.examined = true;
    } catch (const winrt::hresult_error& error) {
        // What has gone since it was listed is no camera with a failure; the rest is tried again next time.
        if (error.code() != winrt::result::notFound)
            known.error = error;
    }
}

CameraGroupHandle DeviceCatalog::makeGroup(const std::vector<const KnownNode*>& members) const {
    auto group = std::make_shared<CameraGroup>();
    for (const KnownNode* member : members) {
        group->nodes.push_back(member->node);
        if (member->description)
            group->sources.push_back({textOf(member->id), member->node, *member->description});
        else if (!group->error)
            group->error = member->error;
    }
    std::stable_sort(group->sources.begin(), group->sources.end(),
                     [](const CameraSource& a, const CameraSource& b) { return rankOf(a) < rankOf(b); });
    if (!group->sources.empty())
        group->error.reset();
    const VideoNode& first = group->sources.empty() ? members.front()->node : group->sources.front().node;
    group->id = group->sources.empty() ? textOf(members.front()->id) : group->sources.front().id;
    group->manufacturer = textOf(manufacturerOf(first));
    group->model = textOf(modelOf(first));
    group->name = group->sources.empty() ? textOf(first.name) : textOf(group->sources.front().description.card);
    group->container = hashedGuid(members.front()->id);
    return group;
}

} // namespace Platform::V4l2
