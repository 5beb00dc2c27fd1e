#include "Platform/V4l2/Session/StreamKeeper.h"

#include <algorithm>
#include <cassert>

namespace Platform::V4l2 {

TimePoint StreamKeeper::start() {
    assert(!isRunning());
    _stream = std::make_unique<Stream>(_node, _description);
    _state = State::Running;
    forgetInterval();
    _lastSign = std::chrono::steady_clock::now();
    return _lastSign;
}

void StreamKeeper::stop() {
    _stream.reset();
    _state = State::Stopped;
}

void StreamKeeper::waitUntil(TimePoint moment) {
    _stream.reset();
    _state = State::WaitingToRestart;
    _restartAt = moment;
}

void StreamKeeper::fail() {
    _stream.reset();
    _hasComplained = false;
    waitUntil(std::chrono::steady_clock::now() + _limits.restart);
}

void StreamKeeper::passFrames(const FrameVisitor& visit) {
    try {
        // More than the driver has buffers there cannot be.
        for (int passed = 0; isRunning() && passed < VIDEO_MAX_FRAME; ++passed) {
            const auto frame = _stream->dequeue();
            if (!frame)
                return;
            if (frame->isEmpty)
                return fail(); // that is how a stalled endpoint shows; nothing comes behind it
            _lastSign = frame->time.arrival;
            visit(*_stream, *frame);
            _stream->giveBack(*frame);
        }
    } catch (const winrt::hresult_error&) {
        // Whoever waits for a frame goes on waiting: the stream may come back.
        fail();
    }
}

void StreamKeeper::renewPatience(std::optional<std::chrono::nanoseconds> longestInterval) {
    constexpr int intervals = 4; // a camera may lose a few frames
    _patience = _limits.silence;
    if (longestInterval) {
        const auto some = std::chrono::ceil<std::chrono::milliseconds>(intervals * *longestInterval);
        _patience = std::min(_patience, std::max(some, _limits.shortSilence));
    }
}

int StreamKeeper::descriptor() const {
    const bool listens = isRunning() || (_state == State::WaitingToRestart && !_hasComplained);
    return listens ? _node.descriptor() : -1;
}

void StreamKeeper::descriptorReady(bool failed, const FrameVisitor& visit) {
    if (!isRunning()) {
        v4l2_capability capability{};
        _node.tryControl(VIDIOC_QUERYCAP, capability); // finds out whether the camera is gone
        _hasComplained = true;                         // an older driver would go on while nothing streams
        return;
    }
    passFrames(visit);
    // A failure without a frame to explain it would be reported again and again.
    if (failed && isRunning())
        fail();
}

std::optional<TimePoint> StreamKeeper::deadline(bool framesAreWanted) const {
    if (_state == State::WaitingToRestart)
        return _restartAt;
    return isRunning() && framesAreWanted ? std::optional(_lastSign + _patience) : std::nullopt;
}

std::optional<TimePoint> StreamKeeper::deadlinePassed(TimePoint now, bool framesAreWanted) {
    if (const auto due = deadline(framesAreWanted); !due || *due > now)
        return std::nullopt;
    if (isRunning()) {
        _patience = std::min(2 * _patience, _limits.still); // it may be one that begins slowly
        waitUntil(now);
    }
    try {
        return start();
    } catch (const winrt::hresult_error&) {
        fail();
        return std::nullopt;
    }
}

} // namespace Platform::V4l2
