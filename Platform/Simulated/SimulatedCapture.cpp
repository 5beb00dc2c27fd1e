#include "Platform/Simulated/SimulatedCapture.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/ErrnoError.h"
#include "Platform/Simulated/Session/CameraCall.h"
#include "Platform/Simulated/SimulatedController.h"
#include "Platform/Simulated/SimulatedFrameReader.h"
#include "Platform/Simulated/SimulatedFrameSource.h"
#include "Platform/Simulated/SimulatedGroup.h"
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

IAsyncAction SimulatedCapture::InitializeAsync(const MediaCaptureInitializationSettings& settings) {
    constexpr const char* operation = "MediaCapture.InitializeAsync";
    const auto group = std::dynamic_pointer_cast<const SimulatedGroup>(settings.SourceGroup);
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

MapView<MediaFrameSource> SimulatedCapture::FrameSources() const {
    const auto camera = _session->camera();
    return cameraCall(_session, camera, {"MediaCapture.FrameSources"}, [&] {
        _session->requireOpen("MediaCapture.FrameSources", camera);
        const auto group = _session->group();
        std::vector<MapView<MediaFrameSource>::Entry> entries;
        for (const SourceDefinition& source : group->sources)
            entries.emplace_back(source.id, std::make_shared<SimulatedFrameSource>(
                                                _session, std::shared_ptr<const SourceDefinition>(group, &source)));
        return MapView<MediaFrameSource>(std::move(entries));
    });
}

Platform::VideoDeviceController SimulatedCapture::VideoDeviceController() const {
    const auto camera = _session->camera();
    return cameraCall(_session, camera, {"VideoDeviceController"}, [&]() -> Platform::VideoDeviceController {
        _session->requireOpen("VideoDeviceController", camera);
        return std::make_shared<SimulatedController>(_session, camera);
    });
}

IAsyncOperation<MediaFrameReader> SimulatedCapture::CreateFrameReaderAsync(const MediaFrameSource& source) {
    constexpr const char* operation = "MediaCapture.CreateFrameReaderAsync";
    const auto own = std::dynamic_pointer_cast<const SimulatedFrameSource>(source);
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
            return std::make_shared<SimulatedFrameReader>(session, camera);
        });
}

IAsyncAction SimulatedCapture::CapturePhotoToStreamAsync(const ImageEncodingProperties& encoding,
                                                         const RandomAccessStream& stream) {
    return captureStill(_session, encoding, stream);
}

Platform::CameraStreamState SimulatedCapture::CameraStreamState() const {
    _session->requireOpen("MediaCapture.CameraStreamState", _session->camera());
    return _session->isStreaming() ? Platform::CameraStreamState::Streaming : Platform::CameraStreamState::NotStreaming;
}

void SimulatedCapture::Close() {
    cameraCall(_session, _session->camera(), {"MediaCapture.Close"}, [&] { _session->close(); });
}

} // namespace Platform::Simulated
