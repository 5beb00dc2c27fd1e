#include "Platform/Simulated/Session/StillCapture.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/ErrnoError.h"
#include "Platform/Shared/PlatformError.h"
#include "Platform/Shared/RunBeside.h"
#include "Platform/Simulated/Session/CameraCall.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Platform::Simulated {
namespace {

constexpr const char* operation = "MediaCapture.CapturePhotoToStreamAsync";

/// The local time for the caption.
std::string timeText() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 32> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
    return text.data();
}

/// One still under way. Made at the call, then used on the camera's strand alone.
class Still {
public:
    Still(std::shared_ptr<CaptureCore> core, JournalCall call, RandomAccessStream stream)
        : _core(std::move(core)), _call(std::move(call)), _stream(std::move(stream)), _camera(_core->camera()),
          _definition(_camera->definition()), _timesUnplugged(_camera->timesUnplugged()) {}

    IAsyncAction operation() const { return _source.operation(); }
    const CaptureDefinition& capture() const { return _definition->capture; }

    void render();
    void end();
    void fail(const winrt::hresult_error& error);

private:
    void writePicture();
    winrt::hresult_error error(winrt::hresult code, const char* reason) const {
        return Shared::platformError(Simulated::operation, Halden::toUtf8(_camera->deviceId()), code, reason);
    }

    winrt::hresult_error noMemory() const {
        return Shared::errnoError(Simulated::operation, Halden::toUtf8(_camera->deviceId()), ENOMEM);
    }

    const std::shared_ptr<CaptureCore> _core;
    const JournalCall _call;
    RandomAccessStream _stream; // until the picture is in it
    const std::shared_ptr<SimulatedCamera> _camera;
    const std::shared_ptr<const CameraDefinition> _definition;
    const std::uint64_t _timesUnplugged;
    const AsyncOperationSource<void> _source;
    std::vector<std::uint8_t> _png;
    std::optional<winrt::hresult_error> _error;
};

void Still::render() {
    if (capture().outcome == CaptureOutcome::Error) {
        _error = error(winrt::result::fail, "The camera did not deliver a picture.");
        return;
    }
    const std::optional<FormatDefinition> format = _core->stillFormat();
    if (!format) {
        _error = error(winrt::result::fail, "The camera has no format.");
        return;
    }
    try {
        const ChartCaption caption{Halden::toUtf8(_camera->name()), _camera->controls().exposure(),
                                   _camera->nextFrameNumber(), timeText()};
        _png = _camera->renderer().renderPng(capture(), format->Width, format->Height, caption,
                                             Shared::runBeside(_core->simulation()->pool()));
    } catch (const winrt::hresult_error& problem) {
        _error = problem;
    } catch (const std::bad_alloc&) {
        _error = noMemory();
    }
}

void Still::writePicture() {
    if (_core->isClosed())
        throw Shared::closedError(Simulated::operation, Halden::toUtf8(_camera->deviceId()));
    if (_error)
        throw winrt::hresult_error(*_error);
    // Let go of before the call ends: who waits for that takes the next still at once, and has its memory.
    const RandomAccessStream stream = std::move(_stream);
    try {
        stream->WriteOwned(std::move(_png));
    } catch (const std::bad_alloc&) {
        throw noMemory();
    }
}

void Still::end() {
    if (!_camera->isPlugged() || _camera->timesUnplugged() != _timesUnplugged)
        return;
    endCall(_core->simulation()->journal(), _call, _source, [this] { writePicture(); });
}

void Still::fail(const winrt::hresult_error& error) {
    _core->simulation()->journal().failed(_call, error.code());
    _source.fail(error);
}

/// What makes the call itself fail.
void requirePossible(const CaptureCore& core, const std::shared_ptr<SimulatedCamera>& camera,
                     const ImageEncodingProperties& encoding, const RandomAccessStream& stream) {
    core.requireOpen(operation, camera);
    if (encoding.Subtype != u"PNG" || !stream)
        throw Shared::platformError(operation, Halden::toUtf8(camera->deviceId()), winrt::result::invalidArgument,
                                    "Stills are PNG and need a stream.");
}

} // namespace

IAsyncAction captureStill(const std::shared_ptr<CaptureCore>& core, const ImageEncodingProperties& encoding,
                          const RandomAccessStream& stream) {
    const auto now = std::chrono::steady_clock::now();
    const auto camera = core->camera();
    const JournalCall call = onDevice({operation}, camera);
    Journal& journal = core->simulation()->journal();
    const FaultHit hit = faultsOf(camera).take(operation);
    try {
        if (hit.error)
            std::this_thread::sleep_for(hit.delay);
        hit.raise();
        requirePossible(*core, camera, encoding, stream);
    } catch (const winrt::hresult_error& error) {
        journal.raised(call, error.code());
        throw;
    }
    journal.called(call);
    const auto still = std::make_shared<Still>(core, call, stream);
    if (still->capture().outcome != CaptureOutcome::Never) {
        try {
            // Taken first, so that the delay contains the time that this takes.
            camera->strand()->post([still] { still->render(); });
            camera->strand()->postAt(now + hit.delay + still->capture().delay, [still] { still->end(); });
        } catch (const winrt::hresult_error& error) { // no thread for it
            still->fail(error);
        }
    }
    return still->operation();
}

} // namespace Platform::Simulated
