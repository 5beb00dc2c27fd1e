#include "Platform/V4l2/Session/CameraSession.h"

#include "Platform/Shared/PlatformError.h"
#include "Platform/V4l2/Kernel/DeviceErrors.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <string>
#include <utility>

namespace Platform::V4l2 {
namespace {

std::string sizeText(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

} // namespace

CameraSession::CameraSession(Surroundings surroundings, CameraSource source)
    : _surroundings(std::move(surroundings)), _source(std::move(source)),
      _rule(freshnessRuleFor(_source.description.bus)), _node(_surroundings.calls, _source.node.devicePath) {
    // The number of a node may have gone to another camera since.
    v4l2_capability capability{};
    _node.control("VIDIOC_QUERYCAP", VIDIOC_QUERYCAP, capability);
    if (_source.description.bus != textIn(capability.bus_info) || _source.description.card != textIn(capability.card))
        throw goneError("open", _node.path());
}

void CameraSession::assertOwnThread() const { assert(std::this_thread::get_id() == _thread); }

DeviceNode& CameraSession::node() {
    assertOwnThread();
    return _node;
}

void CameraSession::requirePresence() {
    assertOwnThread();
    v4l2_capability capability{}; // the one request that no state of a device that is there refuses
    _node.control("VIDIOC_QUERYCAP", VIDIOC_QUERYCAP, capability);
}

void CameraSession::setFormat(std::uint32_t index) {
    assertOwnThread();
    const auto& formats = _source.description.formats;
    if (index >= formats.size())
        throw Shared::platformError("VIDIOC_S_FMT", _node.path(), winrt::result::invalidArgument,
                                    "the camera has no format " + std::to_string(index));
    _stream.reset(); // a format cannot be set while buffers are reserved
    try {
        applyFormat(formats[index]);
        if (isStreamWanted())
            startStream();
    } catch (const winrt::hresult_error&) {
        if (isStreamWanted() && !_node.isGone())
            _restartAt = std::chrono::steady_clock::now(); // in the format that is left
        throw;
    }
}

void CameraSession::applyFormat(const StreamFormat& wanted) {
    v4l2_format format{};
    format.type = _source.description.bufferType;
    // The two interfaces begin with the same members; those behind, left 0, are the driver's choice.
    format.fmt.pix.width = wanted.width;
    format.fmt.pix.height = wanted.height;
    format.fmt.pix.pixelformat = wanted.pixelFormat->code;
    _node.control("VIDIOC_S_FMT", VIDIOC_S_FMT, format);
    const auto& pix = format.fmt.pix;
    if (pix.width != wanted.width || pix.height != wanted.height || pix.pixelformat != wanted.pixelFormat->code)
        throw Shared::platformError("VIDIOC_S_FMT", _node.path(), winrt::result::fail,
                                    "the camera has set " + pixelFormatName(pix.pixelformat) + " " +
                                        sizeText(pix.width, pix.height) + " instead of " +
                                        pixelFormatName(wanted.pixelFormat->code) + " " +
                                        sizeText(wanted.width, wanted.height));
    if (wanted.interval.denominator != 0)
        applyInterval(wanted.interval);
}

/// The rate is a wish: a driver takes the nearest that it has, and some cannot be told.
void CameraSession::applyInterval(const v4l2_fract& interval) {
    v4l2_streamparm parameters{};
    parameters.type = _source.description.bufferType;
    parameters.parm.capture.timeperframe = interval;
    const int error = _node.tryControl(VIDIOC_S_PARM, parameters);
    if (error != 0 && error != ENOTTY && error != EINVAL)
        _node.raise("VIDIOC_S_PARM", error);
}

void CameraSession::startReader() {
    assertOwnThread();
    if (!_stream)
        startStream();
    ++_readers;
}

void CameraSession::stopReader() {
    assertOwnThread();
    if (_readers > 0)
        --_readers;
    stopUnwantedStream();
}

void CameraSession::startStream() {
    _stream.reset();
    _stream = std::make_unique<Stream>(_node, _source.description);
    _restartAt.reset(); // not before: where this attempt fails the one that was due stays so
    _lastSign = std::chrono::steady_clock::now();
    countFrom(_lastSign);
}

void CameraSession::countFrom(TimePoint moment) {
    // What the camera's mechanics were told before may still move.
    _sinceSetting = FramesSince(std::max(moment, _sinceSetting.moment()));
}

void CameraSession::stopUnwantedStream() {
    if (isStreamWanted())
        return;
    _stream.reset();
    _restartAt.reset();
}

void CameraSession::streamFailed() {
    _stream.reset();
    _hasComplained = false;
    _restartAt = std::chrono::steady_clock::now() + _surroundings.limits.restart;
}

void CameraSession::settingChanged(std::chrono::milliseconds movement) {
    assertOwnThread();
    emptyDriver();
    countFrom(std::chrono::steady_clock::now() + movement);
}

void CameraSession::takeStill(StillRequest request) {
    assertOwnThread();
    emptyDriver();
    const TimePoint asked = request.asked;
    if (_pending.empty())
        _patience = _surroundings.limits.silence;
    if (!_stream && !_restartAt)
        startStream();
    _pending.push_back({std::move(request), FramesSince(asked)});
}

void CameraSession::retakeStill(StillRequest request) {
    assertOwnThread();
    --_inWork;
    _pending.push_back({std::move(request), std::nullopt});
}

void CameraSession::stillEnded() {
    assertOwnThread();
    --_inWork;
    stopUnwantedStream();
}

void CameraSession::framesWait(bool failed) {
    assertOwnThread();
    if (!_stream) {
        v4l2_capability capability{};
        _node.tryControl(VIDIOC_QUERYCAP, capability); // finds out whether the camera is gone
        _hasComplained = true;                         // an older driver would go on while nothing streams
        return;
    }
    passFullBuffers(true);
    // A failure without a frame to explain it would be reported again and again.
    if (failed && _stream)
        streamFailed();
    stopUnwantedStream();
}

/// What is full is from before the event that is about to be noted.
void CameraSession::emptyDriver() {
    if (!wantsFrames())
        _lastSign = std::chrono::steady_clock::now(); // nobody has looked for one since the last
    passFullBuffers(false);
}

/// Takes what is full from the driver, and gives it back. More than the driver has buffers there cannot be.
void CameraSession::passFullBuffers(bool mayTake) {
    try {
        for (int passed = 0; _stream && passed < VIDEO_MAX_FRAME; ++passed) {
            const auto frame = _stream->dequeue();
            if (!frame)
                return;
            if (frame->isEmpty)
                return streamFailed(); // that is how a stalled endpoint shows; nothing comes behind it
            _lastSign = std::chrono::steady_clock::now();
            count(*frame);
            if (mayTake)
                take(*frame);
            _stream->giveBack(*frame);
        }
    } catch (const winrt::hresult_error&) {
        // Whoever waits for a still goes on waiting: the stream may come back.
        streamFailed();
    }
}

void CameraSession::count(const Frame& frame) {
    _sinceSetting.count(frame.time);
    for (PendingStill& still : _pending)
        if (still.frames)
            still.frames->count(frame.time);
}

void CameraSession::take(const Frame& frame) {
    if (_pending.empty() || !_sinceSetting.isBeyond(_rule.afterSetting))
        return;
    const auto waiting = std::stable_partition(_pending.begin(), _pending.end(), [this](const PendingStill& still) {
        return !still.frames || still.frames->isBeyond(_rule.afterRequest);
    });
    if (waiting == _pending.begin())
        return;
    auto bytes = _stream->copyWhole(frame);
    if (!bytes)
        return;
    std::vector<StillRequest> requests;
    for (auto still = _pending.begin(); still != waiting; ++still)
        requests.push_back(std::move(still->request));
    _pending.erase(_pending.begin(), waiting);
    _inWork += static_cast<unsigned>(requests.size());
    _surroundings.sink(std::move(requests), {_stream->layout(), std::move(*bytes)});
}

/// When a stream that gives no sign of life is given up.
std::optional<TimePoint> CameraSession::endOfPatience() const {
    return wantsFrames() ? std::optional(_lastSign + _patience) : std::nullopt;
}

std::optional<TimePoint> CameraSession::deadline() const {
    std::optional<TimePoint> earliest = _restartAt ? _restartAt : endOfPatience(); // never both
    for (const PendingStill& still : _pending) {
        const TimePoint end = still.request.asked + _surroundings.limits.still;
        earliest = earliest ? std::min(*earliest, end) : end;
    }
    return earliest;
}

void CameraSession::deadlinePassed() {
    assertOwnThread();
    const TimePoint now = std::chrono::steady_clock::now();
    if (const auto end = endOfPatience(); end && *end <= now) {
        _restartAt = now;
        _patience = std::min(2 * _patience, _surroundings.limits.still); // it may be one that begins slowly
    }
    if (_restartAt && *_restartAt <= now) {
        try {
            startStream();
        } catch (const winrt::hresult_error&) {
            streamFailed();
        }
    }
    const auto overdue = std::stable_partition(_pending.begin(), _pending.end(), [&](const PendingStill& still) {
        return still.request.asked + _surroundings.limits.still > now;
    });
    const auto error = Shared::platformError("still", _node.path(), winrt::result::timeout,
                                             "the camera has not delivered a picture that is fit");
    for (auto still = overdue; still != _pending.end(); ++still)
        _surroundings.refuse(still->request, error);
    _pending.erase(overdue, _pending.end());
    stopUnwantedStream();
}

void CameraSession::refuseStills(const winrt::hresult_error& error) {
    assertOwnThread();
    for (const PendingStill& still : _pending)
        _surroundings.refuse(still.request, error);
    _pending.clear();
}

} // namespace Platform::V4l2
