#include "Tests/RealDrivers/UsbCamera/Camera.h"

#include "Tests/RealDrivers/UsbCamera/Descriptors.h"

#include <algorithm>
#include <cerrno>

namespace UsbCamera {
namespace {

using std::chrono::steady_clock;

// Standard requests of USB.
constexpr std::uint8_t getStatus = 0;
constexpr std::uint8_t clearFeature = 1;
constexpr std::uint8_t getDescriptor = 6;
constexpr std::uint8_t getConfiguration = 8;
constexpr std::uint8_t setInterface = 11;

constexpr std::uint8_t kindMask = 0x60; // of the request's type
constexpr std::uint8_t classKind = 0x20;

constexpr std::uint8_t typeOf(const Request& request) { return request.setup[0]; }
constexpr std::uint8_t codeOf(const Request& request) { return request.setup[1]; }
constexpr std::uint8_t lowValue(const Request& request) { return request.setup[2]; }
constexpr std::uint8_t highValue(const Request& request) { return request.setup[3]; }
constexpr std::uint8_t lowIndex(const Request& request) { return request.setup[4]; }
constexpr std::uint8_t highIndex(const Request& request) { return request.setup[5]; }

} // namespace

Camera::Camera(const CameraModel& model, unsigned port, Script& script)
    : _model(model), _script(script), _link(port), _sensor(model), _controls(model, _sensor, script),
      _stream(model, _link, script), _nextFrame(steady_clock::now()) {
    _script.plugged();
}

bool Camera::serve() {
    const auto request = _link.receive();
    if (!request)
        return false;
    if (request->isUnlink)
        _link.unlinked(*request, _stream.forget(request->target));
    else if (request->endpoint == Number::frameEndpoint)
        _stream.want(*request);
    else
        control(*request);
    return true;
}

std::chrono::milliseconds Camera::takeFrames() {
    const auto now = steady_clock::now();
    if (now >= _nextFrame) {
        const FrameState frame = _sensor.next();
        _script.frameMade(frame.number);
        _stream.take(frame);
        // A camera that was kept from running does not catch up.
        _nextFrame = std::max(_nextFrame, now - _sensor.interval()) + _sensor.interval();
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(_nextFrame - steady_clock::now());
    return std::max(left, std::chrono::milliseconds(0));
}

void Camera::control(const Request& request) {
    if (_script.isMute() && (typeOf(request) & kindMask) == classKind)
        return; // the kernel takes the request back in the end
    auto bytes = answer(request);
    if (_script.isUnplugged())
        return;
    if (!bytes)
        return _link.fail(request, -EPIPE); // that is how a stall shows
    bytes->resize(std::min<std::size_t>(bytes->size(), request.length));
    _link.succeed(request, *bytes);
}

std::optional<Bytes> Camera::answer(const Request& request) {
    return (typeOf(request) & kindMask) == classKind ? classAnswer(request) : standardAnswer(request);
}

std::optional<Bytes> Camera::standardAnswer(const Request& request) {
    switch (codeOf(request)) {
    case getDescriptor: {
        Bytes bytes = descriptor(_model, highValue(request), lowValue(request));
        return bytes.empty() ? std::nullopt : std::optional(std::move(bytes));
    }
    case getStatus:
        return Bytes{0, 0};
    case getConfiguration:
        return Bytes{1};
    case clearFeature: // of the endpoint: that is how the kernel ends a stream of bulk transfers
    case setInterface:
        _stream.stop();
        return Bytes{};
    default:
        return Bytes{};
    }
}

std::optional<Bytes> Camera::classAnswer(const Request& request) {
    const std::uint8_t selector = highValue(request);
    const std::uint8_t unit = highIndex(request);
    const bool isStreaming = lowIndex(request) == Number::streamingInterface;
    if (codeOf(request) == ClassRequest::setCurrent) {
        const bool done =
            isStreaming ? _stream.set(selector, request.data) : _controls.set(unit, selector, request.data);
        return done ? std::optional(Bytes{}) : std::nullopt;
    }
    return isStreaming ? _stream.get(codeOf(request), selector) : _controls.get(codeOf(request), unit, selector);
}

} // namespace UsbCamera
