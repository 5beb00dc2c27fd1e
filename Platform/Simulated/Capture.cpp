#include "Platform/Simulated/Capture.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/PlatformError.h"
#include "Platform/Simulated/DeviceController.h"
#include "Platform/Simulated/FrameReader.h"
#include "Platform/Simulated/FrameSource.h"
#include "Platform/Simulated/Session/CameraCall.h"
#include "Platform/Simulated/Session/StillCapture.h"
#include "Platform/Simulated/SourceGroup.h"

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
    const auto camera = group ? firstCamera(*_core->simulation(), *group->definition()) : nullptr;
    return readyingCallAsync(_core, camera, {operation, {}, nullptr, argumentsOf(settings)},
                             [core = _core, group, photoSource = settings.PhotoCaptureSource] {
                                 if (!group)
                                     throw Shared::platformError(operation, "a new capture",
                                                                 winrt::result::invalidArgument,
                                                                 "The source group is none of this platform's.");
                                 core->open(group->definition(), photoSource);
                             });
}

MapView<MediaFrameSource> Capture::FrameSources() const {
    const auto camera = _core->camera();
    return cameraCall(_core, camera, {"MediaCapture.FrameSources"}, [&] {
        _core->requireOpen("MediaCapture.FrameSources", camera);
        const auto group = _core->group();
        std::vector<MapView<MediaFrameSource>::Entry> entries;
        for (const SourceDefinition& source : group->sources)
            entries.emplace_back(source.id, std::make_shared<FrameSource>(
                                                _core, std::shared_ptr<const SourceDefinition>(group, &source)));
        return MapView<MediaFrameSource>(std::move(entries));
    });
}

Platform::VideoDeviceController Capture::VideoDeviceController() const {
    const auto camera = _core->camera();
    return cameraCall(_core, camera, {"VideoDeviceController"}, [&]() -> Platform::VideoDeviceController {
        _core->requireOpen("MediaCapture.VideoDeviceController", camera);
        return std::make_shared<DeviceController>(_core, camera);
    });
}

IAsyncOperation<MediaFrameReader> Capture::CreateFrameReaderAsync(const MediaFrameSource& source) {
    constexpr const char* operation = "MediaCapture.CreateFrameReaderAsync";
    const auto own = std::dynamic_pointer_cast<const FrameSource>(source);
    const auto camera = own ? own->camera() : _core->camera();
    Json::Value arguments(Json::arrayValue);
    arguments.append(own ? journalText(own->id()) : Json::Value());
    return cameraCallAsync<MediaFrameReader>(
        _core, camera, {operation, {}, nullptr, std::move(arguments)},
        [core = _core, own, camera]() -> MediaFrameReader {
            core->requireOpen(operation, camera);
            if (!own || own->core() != core)
                throw Shared::platformError(operation, Halden::toUtf8(camera->deviceId()),
                                            winrt::result::invalidArgument, "The capture has no such source.");
            return std::make_shared<FrameReader>(core, camera);
        });
}

IAsyncAction Capture::CapturePhotoToStreamAsync(const ImageEncodingProperties& encoding,
                                                const RandomAccessStream& stream) {
    return captureStill(_core, encoding, stream);
}

Platform::CameraStreamState Capture::CameraStreamState() const {
    _core->requireOpen("MediaCapture.CameraStreamState", _core->camera());
    return _core->isStreaming() ? Platform::CameraStreamState::Streaming : Platform::CameraStreamState::NotStreaming;
}

void Capture::Close() {
    cameraCall(_core, _core->camera(), {"MediaCapture.Close"}, [&] { _core->close(); });
}

} // namespace Platform::Simulated
