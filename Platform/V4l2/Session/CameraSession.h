#pragma once

#include "Platform/V4l2/Controls/KernelControls.h"
#include "Platform/V4l2/Discovery/DeviceCatalog.h"
#include "Platform/V4l2/Kernel/DeviceNode.h"
#include "Platform/V4l2/Session/CameraLimits.h"
#include "Platform/V4l2/Session/StillQueue.h"
#include "Platform/V4l2/Session/StreamKeeper.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

namespace Platform::V4l2 {

/// An open camera: its node, format and settings, and the readers and stills that its stream runs for. Members raise
/// winrt::hresult_error. The camera's thread.
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
    KernelControls& controls();

    void takeStill(StillRequest request);
    /// Looks for another frame: the one that was found was of no use.
    void retakeStill(StillRequest request);
    /// The frame that was found has become a still, or its request has failed.
    void stillEnded();

    /// To be called when `descriptor` has failed, and when it is readable while frames are wanted.
    void framesWait(bool failed);
    /// The descriptor to wait on, or -1.
    int descriptor() const { return _stream.descriptor(); }
    /// False while frames would be thrown away: they may then stay in the driver until the next request empties it.
    bool wantsFrames() const { return _stream.isRunning() && _stills.wantsFrames(); }
    /// When deadlinePassed must be called at the latest, if there is such a moment.
    std::optional<TimePoint> deadline() const;
    void deadlinePassed();

    /// Ends the stills that are waited for.
    void refuseStills(const winrt::hresult_error& error);

private:
    bool isStreamWanted() const { return _readers > 0 || !_stills.isEmpty(); }
    void startStream();
    void stopUnwantedStream();
    void settingChanged(std::chrono::milliseconds movement);
    void emptyDriver();
    void take(const Stream& stream, const Frame& frame);
    void applyFormat(const StreamFormat& format);
    void applyInterval(const v4l2_fract& interval);
    void refuse(const std::vector<StillRequest>& requests, const winrt::hresult_error& error) const;
    void assertOwnThread() const;

    const std::thread::id _thread = std::this_thread::get_id();
    const Surroundings _surroundings;
    const CameraSource _source;
    DeviceNode _node;
    KernelControls _controls{_node};
    StreamKeeper _stream;
    StillQueue _stills;
    unsigned _readers = 0;
};

template <typename Change> auto CameraSession::change(std::chrono::milliseconds movement, Change operation) {
    // Also where the operation fails: it may have changed something before.
    struct Guard {
        CameraSession& session;
        std::chrono::milliseconds movement;
        ~Guard() { session.settingChanged(movement); }
    } guard{*this, movement};
    return operation();
}

} // namespace Platform::V4l2
