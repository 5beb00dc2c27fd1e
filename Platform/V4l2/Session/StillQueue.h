#pragma once

#include "Platform/V4l2/Streaming/Freshness.h"
#include "Platform/V4l2/Streaming/StillRequest.h"

#include <chrono>
#include <optional>
#include <vector>

namespace Platform::V4l2 {

/// The stills of a camera from their request to their end, and what each of them waits for: a frame that is late enough
/// after the request and after the last change of a setting. Sees neither camera nor clock. The camera's thread.
class StillQueue {
public:
    /// `limit`: from a request to its end on a camera that delivers nothing fit.
    StillQueue(FreshnessRule rule, std::chrono::milliseconds limit) : _rule(rule), _limit(limit) {}

    /// A setting is in force, or the stream runs, from that moment on. Without effect for one before the latest.
    void settingChanged(TimePoint moment);

    void add(StillRequest request);
    /// The frame that was found has become a still, or its request has failed.
    void ended() { --_inWork; }
    /// The frame that was found was of no use: any later one is fresh.
    void addAgain(StillRequest request);

    void count(const FrameTime& frame);
    /// Whether the latest frame counted is fresh for a still that waits.
    bool hasFresh() const;
    /// Those that the latest frame counted is fresh for, which are in work from now on, until `ended` or `addAgain`.
    std::vector<StillRequest> takeFresh();

    /// Between the stream's frames with the settings that are in force, as far as it is known.
    std::optional<std::chrono::nanoseconds> longestInterval() const { return _rhythm.longestInterval(); }

    bool isWaiting() const { return !_pending.empty(); }
    /// No still waits, and none is in work.
    bool isEmpty() const { return _pending.empty() && _inWork == 0; }
    /// False while frames would be counted for nothing.
    bool wantsFrames() const { return isWaiting() || !isSettingInForce(); }

    /// When the first still is overdue, if one waits.
    std::optional<TimePoint> deadline() const;
    /// Those whose limit has passed, or passes at that moment.
    std::vector<StillRequest> takeOverdue(TimePoint now);
    std::vector<StillRequest> takeAll();

private:
    struct PendingStill {
        StillRequest request;
        std::optional<FramesSince> frames; // nothing: one that was fresh has been found, and all later ones are
    };

    bool isSettingInForce() const { return _sinceSetting.isBeyond(_rule.afterSetting); }
    bool isFresh(const PendingStill& still) const;
    template <typename Condition> std::vector<StillRequest> take(Condition condition);

    const FreshnessRule _rule;
    const std::chrono::milliseconds _limit;
    FramesSince _sinceSetting{TimePoint{}};
    FrameRhythm _rhythm; // since the setting is in force
    std::vector<PendingStill> _pending;
    unsigned _inWork = 0;
};

} // namespace Platform::V4l2
