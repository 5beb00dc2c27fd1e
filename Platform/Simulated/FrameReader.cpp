#include "Platform/Simulated/FrameReader.h"

#include "Platform/Simulated/Session/CameraCall.h"

#include <utility>

namespace Platform::Simulated {

void FrameReader::Stream::run(bool on) {
    if (_runs.exchange(on) == on)
        return;
    if (on)
        _session->readerStarted();
    else
        _session->readerStopped();
}

void FrameReader::AcquisitionMode(MediaFrameReaderAcquisitionMode mode) {
    constexpr const char* operation = "MediaFrameReader.AcquisitionMode";
    Json::Value arguments(Json::arrayValue);
    arguments.append(static_cast<int>(mode));
    cameraCall(_session, _camera, {operation, {}, nullptr, std::move(arguments)},
               [&] { _session->requireOpen(operation, _camera); });
}

IAsyncOperation<MediaFrameReaderStartStatus> FrameReader::StartAsync() {
    constexpr const char* operation = "MediaFrameReader.StartAsync";
    return cameraCallAsync<MediaFrameReaderStartStatus>(_session, _camera, {operation},
                                                        [session = _session, camera = _camera, stream = _stream] {
                                                            session->requireOpen(operation, camera);
                                                            stream->run(true);
                                                            return MediaFrameReaderStartStatus::Success;
                                                        });
}

IAsyncAction FrameReader::StopAsync() {
    constexpr const char* operation = "MediaFrameReader.StopAsync";
    // A camera that has gone lets go without complaint.
    return cameraCallAsync<void>(_session, _camera, {operation}, [session = _session, stream = _stream] {
        session->requireInitialised(operation);
        stream->run(false);
    });
}

} // namespace Platform::Simulated
