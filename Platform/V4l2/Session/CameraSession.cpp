#include "Platform/V4l2/Session/CameraSession.h"

#include "Platform/Shared/PlatformError.h"
#include "Platform/V4l2/Kernel/DeviceErrors.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <new>
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
      _node(_surroundings.calls, _source.node.devicePath), _stream(_node, _source.description, _surroundings.limits),
      _stills(freshnessRuleFor(_source.description.bus), _surroundings.limits.still) {
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

KernelControls& CameraSession::controls() {
    assertOwnThread();
    return _controls;
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
    _stream.stop(); // a format cannot be set while buffers are reserved
    _controls.forget();
    try {
        applyFormat(formats[index]);
        if (isStreamWanted())
            startStream();
    } catch (const winrt::hresult_error&) {
        if (isStreamWanted() && !_node.isGone())
            _stream.restartSoon(); // in the format that is left
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
    if (!_stream.isRunning())
        startStream();
    ++_readers;
}

void CameraSession::stopReader() {
    assertOwnThread();
    if (_readers > 0)
        --_readers;
    stopUnwantedStream();
}

void CameraSession::startStream() { _stills.settingChanged(_stream.start()); }

void CameraSession::stopUnwantedStream() {
    if (!isStreamWanted())
        _stream.stop();
}

void CameraSession::settingChanged(std::chrono::milliseconds movement) {
    assertOwnThread();
    emptyDriver();
    _stream.forgetInterval();
    _stills.settingChanged(std::chrono::steady_clock::now() + movement);
}

void CameraSession::takeStill(StillRequest request) {
    assertOwnThread();
    emptyDriver();
    if (!_stills.isWaiting())
        _stream.renewPatience(_stills.longestInterval());
    if (_stream.state() == StreamKeeper::State::Stopped)
        startStream();
    _stills.add(std::move(request));
}

void CameraSession::retakeStill(StillRequest request) {
    assertOwnThread();
    _stills.addAgain(std::move(request));
}

void CameraSession::stillEnded() {
    assertOwnThread();
    _stills.ended();
    stopUnwantedStream();
}

void CameraSession::framesWait(bool failed) {
    assertOwnThread();
    _stream.descriptorReady(failed, [this](const Stream& stream, const Frame& frame) {
        _stills.count(frame.time);
        take(stream, frame);
    });
    stopUnwantedStream();
}

/// What is full is from before the event that is about to be noted.
void CameraSession::emptyDriver() {
    const bool ranUnwatched = _stream.isRunning() && !wantsFrames();
    if (ranUnwatched)
        _stream.expectFrames();
    _stream.passFrames([this](const Stream&, const Frame& frame) { _stills.count(frame.time); });
    if (ranUnwatched && !_stream.isRunning() && !_node.isGone())
        _stream.restartSoon(); // it failed some time ago: the pause before the next attempt has passed
}

void CameraSession::take(const Stream& stream, const Frame& frame) {
    if (!_stills.hasFresh())
        return;
    std::optional<std::vector<std::uint8_t>> bytes;
    try {
        bytes = stream.copyWhole(frame);
    } catch (const std::bad_alloc&) {
        const auto requests = _stills.takeFresh();
        refuse(requests, deviceError("still", _node.path(), ENOMEM));
        std::for_each(requests.begin(), requests.end(), [this](const auto&) { _stills.ended(); });
    }
    if (bytes)
        _surroundings.sink(_stills.takeFresh(), {stream.layout(), std::move(*bytes)});
}

std::optional<TimePoint> CameraSession::deadline() const {
    const auto stream = _stream.deadline(wantsFrames());
    const auto stills = _stills.deadline();
    if (stream && stills)
        return std::min(*stream, *stills);
    return stream ? stream : stills;
}

void CameraSession::deadlinePassed() {
    assertOwnThread();
    const TimePoint now = std::chrono::steady_clock::now();
    if (const auto started = _stream.deadlinePassed(now, wantsFrames()))
        _stills.settingChanged(*started);
    refuse(_stills.takeOverdue(now), Shared::platformError("still", _node.path(), winrt::result::timeout,
                                                           "the camera has not delivered a picture that is fit"));
    stopUnwantedStream();
}

void CameraSession::refuseStills(const winrt::hresult_error& error) {
    assertOwnThread();
    refuse(_stills.takeAll(), error);
}

void CameraSession::refuse(const std::vector<StillRequest>& requests, const winrt::hresult_error& error) const {
    for (const StillRequest& request : requests)
        _surroundings.refuse(request, error);
}

} // namespace Platform::V4l2
