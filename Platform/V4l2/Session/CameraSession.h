#pragma once

#include "Platform/V4l2/Discovery/DeviceCatalog.h"
#include "Platform/V4l2/Kernel/DeviceNode.h"
#include "Platform/V4l2/Streaming/StillRequest.h"
#include "Platform/V4l2/Streaming/Stream.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace Platform::V4l2 {

/// The time limits of an open camera; tests shorten them.
struct CameraLimits {
    /// For the driver's answer to one call. The kernel gives a USB camera that is stuck 5 s for a control.
    std::chrono::milliseconds answer{12'000};
    /// For a still on a camera that delivers nothing fit.
    std::chrono::milliseconds still{30'000};
    /// From a failure of the stream to the attempt to start it again.
    std::chrono::milliseconds restart{1'000};
    /// Without any frame while one is wanted; a camera that hangs often sends again when the stream is started anew.
    /// Leaves the second half of the time that the hub waits for a still. Doubled each time, until the next still.
    std::chrono::milliseconds silence{4'000};
};

/// An open camera: node, stream, settings and the stills that are waited for. Created, used and destroyed on the one
/// thread of its CameraWorker. Members raise winrt::hresult_error.
class CameraSession {
public:
    struct Surroundings {
        std::shared_ptr<SystemCalls> calls;
        CameraLimits limits;
        StillSink sink;
        StillRefusal refuse;
    };

    /// Opens the node, and makes sure that it is still the camera that the source describes.
    CameraSession(Surroundings surroundings, CameraSource source);

    /// Raises if the camera is gone.
    void requirePresence();
    bool isGone() const { return _node.isGone(); }

    /// Takes a position in the source's formats. A running stream goes on in the new format.
    void setFormat(std::uint32_t index);

    void startReader();
    void stopReader();
    bool isReading() const { return _readers > 0; }

    /// Runs something that may change a setting, and has later stills wait until it is in force.
    template <typename Change> auto change(std::chrono::milliseconds movement, Change operation);
    DeviceNode& node();

    void takeStill(StillRequest request);
    /// Looks for another frame: the one that was found was of no use.
    void retakeStill(StillRequest request);
    /// The frame that was found has become a still, or its request has failed.
    void stillEnded();

    /// To be called when `descriptor` has failed, and when it is readable while frames are wanted.
    void framesWait(bool failed);
    /// The descriptor to wait on, or -1. Between two attempts at a stream it tells whether the camera goes.
    int descriptor() const { return _stream || (_restartAt && !_hasComplained) ? _node.descriptor() : -1; }
    /// False while frames would be thrown away: they may then stay in the driver until the next request empties it.
    bool wantsFrames() const { return _stream && (!_pending.empty() || !_sinceSetting.isBeyond(_rule.afterSetting)); }
    /// When deadlinePassed must be called at the latest, if there is such a moment.
    std::optional<TimePoint> deadline() const;
    void deadlinePassed();

    /// Ends the stills that are waited for.
    void refuseStills(const winrt::hresult_error& error);

private:
    struct PendingStill {
        StillRequest request;
        std::optional<FramesSince> frames; // nothing: one that was fresh has been found, and all later ones are
    };

    bool isStreamWanted() const { return _readers > 0 || !_pending.empty() || _inWork > 0; }
    void startStream();
    void stopUnwantedStream();
    void streamFailed();
    void settingChanged(std::chrono::milliseconds movement);
    void countFrom(TimePoint moment);
    std::optional<TimePoint> endOfPatience() const;
    void emptyDriver();
    void passFullBuffers(bool mayTake);
    void count(const Frame& frame);
    void take(const Frame& frame);
    void applyFormat(const StreamFormat& format);
    void applyInterval(const v4l2_fract& interval);
    void assertOwnThread() const;

    const std::thread::id _thread = std::this_thread::get_id();
    const Surroundings _surroundings;
    const CameraSource _source;
    const FreshnessRule _rule;
    DeviceNode _node;
    std::unique_ptr<Stream> _stream;
    std::optional<TimePoint> _restartAt;
    bool _hasComplained = false; // since the stream failed
    FramesSince _sinceSetting{TimePoint{}};
    TimePoint _lastSign; // of life from the stream, or the moment from which one is expected
    std::chrono::milliseconds _patience = _surroundings.limits.silence;
    unsigned _readers = 0;
    std::vector<PendingStill> _pending;
    unsigned _inWork = 0; // stills whose frame has been found
};

template <typename Change> auto CameraSession::change(std::chrono::milliseconds movement, Change operation) {
    // Also where the operation fails: it may have changed something before.
    struct Guard {
        CameraSession& session;
        std::chrono::milliseconds movement;
        ~Guard() { session.settingChanged(movement); }
    } guard{*this, movement};
    return operation(_node);
}

} // namespace Platform::V4l2
