#include "Platform/Simulated/Capture.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/ErrnoError.h"
#include "Platform/Simulated/Session/CameraCall.h"
#include "Platform/Simulated/DeviceController.h"
#include "Platform/Simulated/FrameReader.h"
#include "Platform/Simulated/FrameSource.h"
#include "Platform/Simulated/SourceGroup.h"
#include "Platform/Simulated/Session/StillCapture.h"

#include <utility>
#include <vector>

namespace Platform::Simulated {
namespace {

Json::Value argumentsOf(const MediaCaptureInitializationSettings& settings) {
    Json::Value arguments(Json::arrayValue);
    arguments.append(settings.SourceGroup ? journalText(settings.SourceGroup->Id()) : Json::Value());
    arguments.append(static_cast<int>(settings.PhotoCaptureSource));
    arguments.append(static_cast<int>(settings.StreamingCaptureMode));
    return arguments;
}

} // namespace

IAsyncAction Capture::InitializeAsync(const MediaCaptureInitializationSettings& settings) {
    constexpr const char* operation = "MediaCapture.InitializeAsync";
    const auto group = std::dynamic_pointer_cast<const SourceGroup>(settings.SourceGroup);
    const auto camera = group ? firstCamera(*_session->simulation(), *group->definition()) : nullptr;
    return cameraCallAsync<void>(_session, camera, {operation, {}, nullptr, argumentsOf(settings)},
                                 [session = _session, group, photoSource = settings.PhotoCaptureSource] {
                                     if (!group)
                                         throw Shared::platformError(operation, "a new capture",
                                                                     winrt::result::invalidArgument,
                                                                     "The source group is none of this platform's.");
                                     session->open(group->definition(), photoSource);
                                 });
}

MapView<MediaFrameSource> Capture::FrameSources() const {
    const auto camera = _session->camera();
    return cameraCall(_session, camera, {"MediaCapture.FrameSources"}, [&] {
        _session->requireOpen("MediaCapture.FrameSources", camera);
        const auto group = _session->group();
        std::vector<MapView<MediaFrameSource>::Entry> entries;
        for (const SourceDefinition& source : group->sources)
            entries.emplace_back(source.id, std::make_shared<FrameSource>(
                                                _session, std::shared_ptr<const SourceDefinition>(group, &source)));
        return MapView<MediaFrameSource>(std::move(entries));
    });
}

Platform::VideoDeviceController Capture::VideoDeviceController() const {
    const auto camera = _session->camera();
    return cameraCall(_session, camera, {"VideoDeviceController"}, [&]() -> Platform::VideoDeviceController {
        _session->requireOpen("VideoDeviceController", camera);
        return std::make_shared<DeviceController>(_session, camera);
    });
}

IAsyncOperation<MediaFrameReader> Capture::CreateFrameReaderAsync(const MediaFrameSource& source) {
    constexpr const char* operation = "MediaCapture.CreateFrameReaderAsync";
    const auto own = std::dynamic_pointer_cast<const FrameSource>(source);
    const auto camera = own ? own->camera() : _session->camera();
    Json::Value arguments(Json::arrayValue);
    arguments.append(own ? journalText(own->id()) : Json::Value());
    return cameraCallAsync<MediaFrameReader>(
        _session, camera, {operation, {}, nullptr, std::move(arguments)},
        [session = _session, own, camera]() -> MediaFrameReader {
            session->requireOpen(operation, camera);
            if (!own || own->session() != session)
                throw Shared::platformError(operation, Halden::toUtf8(camera->deviceId()),
                                            winrt::result::invalidArgument, "The capture has no such source.");
            return std::make_shared<FrameReader>(session, camera);
        });
}

IAsyncAction Capture::CapturePhotoToStreamAsync(const ImageEncodingProperties& encoding,
                                                         const RandomAccessStream& stream) {
    return captureStill(_session, encoding, stream);
}

Platform::CameraStreamState Capture::CameraStreamState() const {
    _session->requireOpen("MediaCapture.CameraStreamState", _session->camera());
    return _session->isStreaming() ? Platform::CameraStreamState::Streaming : Platform::CameraStreamState::NotStreaming;
}

void Capture::Close() {
    cameraCall(_session, _session->camera(), {"MediaCapture.Close"}, [&] { _session->close(); });
}

} // namespace Platform::Simulated
