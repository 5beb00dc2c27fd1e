#include "Platform/Simulated/FrameReader.h"

#include "Platform/Simulated/Session/CameraCall.h"

#include <utility>

namespace Platform::Simulated {

void FrameReader::Stream::run(bool on) {
    if (_runs.exchange(on) == on)
        return;
    if (on)
        _core->readerStarted();
    else
        _core->readerStopped();
}

void FrameReader::AcquisitionMode(MediaFrameReaderAcquisitionMode mode) {
    constexpr const char* operation = "MediaFrameReader.AcquisitionMode";
    Json::Value arguments(Json::arrayValue);
    arguments.append(static_cast<int>(mode));
    cameraCall(_core, _camera, {operation, {}, nullptr, std::move(arguments)},
               [&] { _core->requireOpen(operation, _camera); });
}

IAsyncOperation<MediaFrameReaderStartStatus> FrameReader::StartAsync() {
    constexpr const char* operation = "MediaFrameReader.StartAsync";
    return cameraCallAsync<MediaFrameReaderStartStatus>(_core, _camera, {operation},
                                                        [core = _core, camera = _camera, stream = _stream] {
                                                            core->requireOpen(operation, camera);
                                                            stream->run(true);
                                                            return MediaFrameReaderStartStatus::Success;
                                                        });
}

IAsyncAction FrameReader::StopAsync() {
    constexpr const char* operation = "MediaFrameReader.StopAsync";
    // A camera that has gone lets go without complaint.
    return cameraCallAsync<void>(
        _core, _camera, {operation},
        [core = _core, stream = _stream] {
            core->requireInitialised(operation);
            stream->run(false);
        },
        PlainlyInAnyCase());
}

} // namespace Platform::Simulated
