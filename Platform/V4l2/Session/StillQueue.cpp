#include "Platform/V4l2/Session/StillQueue.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Platform::V4l2 {

void StillQueue::settingChanged(TimePoint moment) {
    _rhythm = {};
    // What the camera's mechanics were told before may still move.
    if (moment > _sinceSetting.moment())
        _sinceSetting = FramesSince(moment);
}

void StillQueue::add(StillRequest request) {
    const TimePoint asked = request.asked;
    _pending.push_back({std::move(request), FramesSince(asked)});
}

void StillQueue::addAgain(StillRequest request) {
    --_inWork;
    _pending.push_back({std::move(request), std::nullopt});
}

void StillQueue::count(const FrameTime& frame) {
    _sinceSetting.count(frame);
    if (isSettingInForce())
        _rhythm.count(frame);
    for (PendingStill& still : _pending)
        if (still.frames)
            still.frames->count(frame);
}

bool StillQueue::isFresh(const PendingStill& still) const {
    return isSettingInForce() && (!still.frames || still.frames->isBeyond(_rule.afterRequest));
}

bool StillQueue::hasFresh() const {
    return std::any_of(_pending.begin(), _pending.end(), [this](const PendingStill& still) { return isFresh(still); });
}

/// In the order in which they were added.
template <typename Condition> std::vector<StillRequest> StillQueue::take(Condition condition) {
    const auto taken = std::stable_partition(_pending.begin(), _pending.end(),
                                             [&](const PendingStill& still) { return !condition(still); });
    std::vector<StillRequest> requests;
    requests.reserve(static_cast<std::size_t>(_pending.end() - taken));
    for (auto still = taken; still != _pending.end(); ++still)
        requests.push_back(std::move(still->request));
    _pending.erase(taken, _pending.end());
    return requests;
}

std::vector<StillRequest> StillQueue::takeFresh() {
    auto requests = take([this](const PendingStill& still) { return isFresh(still); });
    _inWork += static_cast<unsigned>(requests.size());
    return requests;
}

std::optional<TimePoint> StillQueue::deadline() const {
    std::optional<TimePoint> earliest;
    for (const PendingStill& still : _pending) {
        const TimePoint end = still.request.asked + _limit;
        earliest = earliest ? std::min(*earliest, end) : end;
    }
    return earliest;
}

std::vector<StillRequest> StillQueue::takeOverdue(TimePoint now) {
    return take([&](const PendingStill& still) { return still.request.asked + _limit <= now; });
}

std::vector<StillRequest> StillQueue::takeAll() {
    return take([](const PendingStill&) { return true; });
}

} // namespace Platform::V4l2
