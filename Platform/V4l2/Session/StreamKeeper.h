#pragma once

#include "Platform/V4l2/Discovery/NodeDescription.h"
#include "Platform/V4l2/Kernel/DeviceNode.h"
#include "Platform/V4l2/Session/CameraLimits.h"
#include "Platform/V4l2/Streaming/Stream.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace Platform::V4l2 {

/// Owns a camera's stream, and starts it again where it fails or falls silent. The camera's thread.
///
///                    start
///     Stopped ---------------------> Running
///      ^ | ^          stop            |   ^
///      | | +--------------------------+   |
///      | |    fails, falls silent     |   |
///      | |    or is to restart soon   |   |  start, or its moment comes
///      | |                            v   |
///      | +-----------------------> WaitingToRestart ---+
///      |         restartSoon          |   ^            |  fails again
///      +------------------------------+   +------------+
///                     stop
class StreamKeeper {
public:
    enum class State { Stopped, Running, WaitingToRestart };

    /// Looks at a frame, which is given back to the driver after it.
    using FrameVisitor = std::function<void(const Stream&, const Frame&)>;

    /// The node and its description must outlive the keeper.
    StreamKeeper(DeviceNode& node, const NodeDescription& description, const CameraLimits& limits)
        : _node(node), _description(description), _limits(limits) {}

    State state() const { return _state; }
    bool isRunning() const { return _state == State::Running; }

    /// Starts a stream that does not run; the moment since when it does. Raises, and leaves the state as it is.
    TimePoint start();
    void stop();
    /// Ends what runs, and has a stream be started again at once.
    void restartSoon() { waitUntil(std::chrono::steady_clock::now()); }

    /// Takes what is full from the driver, shows it to the visitor, and gives it back. A failure, the visitor's too,
    /// ends the stream for now.
    void passFrames(const FrameVisitor& visit);

    /// The descriptor to wait on, or -1. Between two attempts at a stream it tells whether the camera goes.
    int descriptor() const;
    /// To be called when `descriptor` has failed, and when it is readable while frames are wanted.
    void descriptorReady(bool failed, const FrameVisitor& visit);

    /// The patience with a silent stream is that of the beginning again; less where its frames are known not to be far
    /// apart.
    void renewPatience(std::optional<std::chrono::nanoseconds> longestInterval = std::nullopt);
    /// The frames may be further apart from now on.
    void forgetInterval() { _patience = std::max(_patience, _limits.silence); }
    /// Nobody has looked for a frame so far: the silence begins now.
    void expectFrames() { _lastSign = std::chrono::steady_clock::now(); }
    /// When deadlinePassed must be called at the latest, if there is such a moment.
    std::optional<TimePoint> deadline(bool framesAreWanted) const;
    /// Starts the stream again if that is due; the moment since when it runs.
    std::optional<TimePoint> deadlinePassed(TimePoint now, bool framesAreWanted);

private:
    void waitUntil(TimePoint moment);
    void fail();

    DeviceNode& _node;
    const NodeDescription& _description;
    const CameraLimits _limits;
    State _state = State::Stopped;
    std::unique_ptr<Stream> _stream; // while it runs
    TimePoint _restartAt;            // while it waits
    bool _hasComplained = false;     // the descriptor, since the stream failed
    TimePoint _lastSign;             // of life from the stream, or the moment from which one is expected
    std::chrono::milliseconds _patience = _limits.silence;
};

} // namespace Platform::V4l2
