#include "Platform/V4l2/Watcher.h"

#include "Platform/Shared/DeviceInformationValue.h"
#include "Platform/Shared/StartThread.h"
#include "Platform/Shared/WakeUp.h"
#include "Platform/V4l2/Discovery/SourceGroup.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

namespace Platform::V4l2 {

/// What the thread works on; outlives the watcher by as long as it takes the thread to see that it is to end.
struct Watcher::Loop {
    explicit Loop(DeviceLister& lister, std::shared_ptr<DeviceCatalog> cameras)
        : _monitor(lister.monitor()), _catalog(std::move(cameras)), _wakeUp("the device watcher") {}

    void run(const std::weak_ptr<Watcher>& watcher);
    void stop();

private:
    using Groups = std::map<std::u16string, CameraGroupHandle>;

    std::optional<Groups> look();
    std::set<std::string> waitForRemovals(int limitInMs);
    void compare(Watcher& watcher, const Groups& present, const std::set<std::string>& removed);
    static bool isSame(const CameraGroup& a, const CameraGroup& b);

    const std::unique_ptr<DeviceMonitor> _monitor;
    const std::shared_ptr<DeviceCatalog> _catalog;
    const Shared::WakeUp _wakeUp;
    std::atomic<bool> _stopping{false};
    Groups _reported; // the thread's, by id
};

Watcher::Watcher(std::shared_ptr<Shared::WorkerPool> pool, std::shared_ptr<DeviceLister> lister,
                 std::shared_ptr<DeviceCatalog> catalog)
    : DeviceWatcherBase(std::move(pool)), _lister(std::move(lister)), _catalog(std::move(catalog)) {}

Watcher::~Watcher() {
    if (!_thread.joinable())
        return;
    _loop->stop();
    // The last handle may be released by the thread itself, while it reports.
    if (_thread.get_id() == std::this_thread::get_id())
        _thread.detach();
    else
        _thread.join();
}

void Watcher::startWatching() {
    // Listening begins before the first look, so that nothing falls between the two.
    _loop = std::make_shared<Loop>(*_lister, _catalog);
    const auto self = std::static_pointer_cast<Watcher>(shared_from_this());
    _thread =
        Shared::startThread("the device watcher", [loop = _loop, weak = std::weak_ptr(self)] { loop->run(weak); });
}

void Watcher::vanished(const CameraGroup& group) {
    reportRemoved(std::make_shared<Shared::DeviceInformationUpdateValue>(group.id, PropertyMap()));
}

DeviceInformation Watcher::deviceOf(const CameraGroup& group) { return groupDevice(group); }

void Watcher::Loop::stop() {
    _stopping = true;
    _wakeUp.wake();
}

void Watcher::Loop::run(const std::weak_ptr<Watcher>& watcher) {
    constexpr int forever = -1;
    constexpr int untilNextLookInMs = 1'000; // after one that failed
    std::set<std::string> removed;           // since the last look
    bool first = true;
    while (!_stopping) {
        int limitInMs = forever;
        // Nothing keeps the watcher while the thread waits.
        if (const auto self = watcher.lock()) {
            if (const auto present = look()) {
                compare(*self, *present, removed);
                removed.clear();
                if (std::exchange(first, false))
                    self->reportEnumerationCompleted();
            } else {
                limitInMs = untilNextLookInMs;
            }
        }
        removed.merge(waitForRemovals(limitInMs));
    }
}

/// The cameras that are there; nothing where the system cannot tell, as without a descriptor to spare.
std::optional<Watcher::Loop::Groups> Watcher::Loop::look() try {
    Groups present;
    for (const CameraGroupHandle& group : _catalog->groups())
        present.emplace(group->id, group);
    return present;
} catch (const winrt::hresult_error&) {
    return std::nullopt;
}

/// Waits for news, and takes all that there are; the nodes that went.
std::set<std::string> Watcher::Loop::waitForRemovals(int limitInMs) {
    std::array<pollfd, 2> waited{pollfd{_wakeUp.descriptor(), POLLIN, 0}, pollfd{_monitor->descriptor(), POLLIN, 0}};
    poll(waited.data(), waited.size(), limitInMs);
    std::set<std::string> removed;
    while (const auto event = _monitor->receive())
        if (event->removed)
            removed.insert(event->systemPath);
    return removed;
}

bool Watcher::Loop::isSame(const CameraGroup& a, const CameraGroup& b) {
    return a.nodes == b.nodes && a.error.has_value() == b.error.has_value();
}

/// A camera that was plugged in anew under the same id has gone and come.
void Watcher::Loop::compare(Watcher& watcher, const Groups& present, const std::set<std::string>& removed) {
    for (auto known = _reported.begin(); known != _reported.end();) {
        const CameraGroup& group = *known->second;
        const auto now = present.find(known->first);
        const bool lostNode = std::any_of(group.nodes.begin(), group.nodes.end(),
                                          [&](const VideoNode& node) { return removed.contains(node.systemPath); });
        if (!lostNode && now != present.end() && isSame(group, *now->second)) {
            ++known;
            continue;
        }
        watcher.vanished(group);
        known = _reported.erase(known);
    }
    for (const auto& [id, group] : present)
        if (_reported.emplace(id, group).second)
            watcher.appeared(*group);
}

} // namespace Platform::V4l2
