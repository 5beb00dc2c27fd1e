#include "Tests/RealDrivers/UsbCamera/FrameStream.h"

#include "Tests/RealDrivers/UsbCamera/Controls.h"
#include "Tests/RealDrivers/UsbCamera/Picture.h"

#include <algorithm>
#include <cerrno>

namespace UsbCamera {
namespace {

constexpr std::uint8_t probeSelector = 1;
constexpr std::uint8_t commitSelector = 2;
constexpr std::size_t probeSize = 34; // bytes, of UVC 1.1

// One payload fills one transfer of the kernel, which has at most 32 packets of 512 bytes.
constexpr std::uint32_t payloadSize = 16384;

constexpr std::uint8_t headerSize = 2;
constexpr std::uint8_t endOfFrame = 0x02;
constexpr std::uint8_t error = 0x40;
constexpr std::uint8_t endOfHeader = 0x80;

std::uint8_t within(std::uint32_t value, std::size_t count) {
    return static_cast<std::uint8_t>(std::clamp<std::size_t>(value, 1, count));
}

} // namespace

FrameStream::FrameStream(const CameraModel& model, UsbIpLink& link, Script& script)
    : _model(model), _link(link), _script(script) {}

std::optional<Bytes> FrameStream::get(std::uint8_t request, std::uint8_t selector) const {
    if (selector != probeSelector && selector != commitSelector)
        return std::nullopt;
    if (request == ClassRequest::getLength)
        return Bytes{probeSize, 0};
    if (request == ClassRequest::getInfo)
        return Bytes{3};
    return probeBlock();
}

FrameStream::Choice FrameStream::choiceFrom(const CameraModel& model, const Bytes& value) {
    return {within(numberAt(value, 2, 1), model.formats.size()), within(numberAt(value, 3, 1), model.sizes.size())};
}

Bytes FrameStream::probeBlock() const {
    const Size& size = _model.sizes[_probed.frame - 1u];
    Bytes block;
    append(block, 1, 2); // the interval is what the other end may not change
    append(block, Bytes{_probed.format, _probed.frame});
    append(block, _model.interval(), 4);
    append(block, 0, 10); // key frames, compression, delay
    append(block, std::uint64_t{size.width} * size.height * 2, 4);
    append(block, payloadSize, 4);
    append(block, 48'000'000, 4);
    append(block, 3, 1); // frame toggle and end of frame are to be looked at
    block.resize(probeSize);
    return block;
}

bool FrameStream::set(std::uint8_t selector, const Bytes& value) {
    if (selector == probeSelector) {
        _script.passed("probe");
        _probed = choiceFrom(_model, value);
        return true;
    }
    if (selector != commitSelector || _script.refusalOf("commit") != 0)
        return false;
    _committed = choiceFrom(_model, value);
    _running = true;
    _frame.clear();
    _sent = 0;
    _script.happened("commit");
    return true;
}

void FrameStream::stop() {
    _script.stallEnded();
    if (!_running)
        return;
    _running = false;
    _frame.clear();
    _script.happened("stop");
}

void FrameStream::want(const Request& request) {
    _wanted.push_back(request);
    send();
}

bool FrameStream::forget(std::uint32_t requestNumber) {
    const auto found = std::find_if(_wanted.begin(), _wanted.end(),
                                    [&](const Request& request) { return request.number == requestNumber; });
    if (found == _wanted.end())
        return false;
    _wanted.erase(found);
    return true;
}

void FrameStream::take(const FrameState& frame) {
    if (_script.isStalled())
        return refuse();
    if (!_running || _script.isFrozen() || !_frame.empty() || _wanted.empty())
        return;
    _frame = encode(frame, _model.formats[_committed.format - 1u], _model.sizes[_committed.frame - 1u]);
    const bool isDamaged = frame.number % 2 != 0;
    if (isDamaged && _script.damage() == Damage::Cut)
        _frame.resize(_frame.size() / 2);
    _marked = isDamaged && _script.damage() == Damage::Mark;
    _sent = 0;
    _toggle ^= 1;
    send();
}

/// A stalled endpoint refuses whatever is asked of it.
void FrameStream::refuse() {
    for (const Request& request : _wanted)
        _link.fail(request, -EPIPE);
    _wanted.clear();
    _frame.clear();
}

Bytes FrameStream::header(bool isLast) const {
    return {headerSize,
            static_cast<std::uint8_t>(endOfHeader | _toggle | (isLast ? endOfFrame : 0) | (_marked ? error : 0))};
}

void FrameStream::send() {
    if (_script.isStalled())
        return refuse();
    while (!_frame.empty() && !_wanted.empty() && !_script.isUnplugged()) {
        const Request request = _wanted.front();
        _wanted.pop_front();
        const std::size_t room = std::min(request.length, payloadSize) - headerSize;
        const std::size_t count = std::min(room, _frame.size() - _sent);
        const bool isLast = _sent + count == _frame.size();
        Bytes payload = header(isLast);
        const auto from = _frame.begin() + static_cast<std::ptrdiff_t>(_sent);
        payload.insert(payload.end(), from, from + static_cast<std::ptrdiff_t>(count));
        _link.succeed(request, payload);
        const bool wasInFirstHalf = _sent < _frame.size() / 2;
        _sent += count;
        if (wasInFirstHalf && _sent >= _frame.size() / 2)
            _script.passed("half-frame");
        if (!isLast)
            continue;
        _frame.clear();
        _script.framePassed();
    }
}

} // namespace UsbCamera
