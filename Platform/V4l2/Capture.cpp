#include "Platform/V4l2/Capture.h"

#include "Platform/Shared/PlatformError.h"
#include "Platform/Shared/RunAsync.h"
#include "Platform/V4l2/DeviceController.h"
#include "Platform/V4l2/Discovery/SourceGroup.h"
#include "Platform/V4l2/FrameReader.h"
#include "Platform/V4l2/FrameSource.h"

#include <vector>

namespace Platform::V4l2 {

IAsyncAction Capture::InitializeAsync(const MediaCaptureInitializationSettings& settings) {
    const auto group = std::dynamic_pointer_cast<SourceGroup>(settings.SourceGroup);
    return Shared::runAsync<void>(_core->pool(), [core = _core, group] {
        Shared::makeReady(*core, [&] {
            if (!group || group->camera()->sources.empty())
                throw Shared::platformError("MediaCapture.InitializeAsync", "a camera", winrt::result::invalidArgument,
                                            "the source group is none of this platform");
            core->initialise(group->camera());
        });
    });
}

MapView<MediaFrameSource> Capture::FrameSources() const {
    _core->requireCamera("MediaCapture.FrameSources");
    std::vector<MapView<MediaFrameSource>::Entry> entries;
    if (const CameraGroupHandle group = _core->group())
        for (const MediaFrameSourceInfo& info : SourceGroup(group).SourceInfos())
            entries.emplace_back(info->Id(), std::make_shared<FrameSource>(_core, info, entries.size()));
    return entries;
}

Platform::VideoDeviceController Capture::VideoDeviceController() const {
    _core->requireCamera("MediaCapture.VideoDeviceController");
    return std::make_shared<DeviceController>(_core);
}

IAsyncOperation<MediaFrameReader> Capture::CreateFrameReaderAsync(const MediaFrameSource& source) {
    constexpr std::string_view operation = "MediaCapture.CreateFrameReaderAsync";
    _core->requireInitialised(operation);
    const auto ours = std::dynamic_pointer_cast<FrameSource>(source);
    return Shared::runAsync<MediaFrameReader>(_core->pool(), [core = _core, ours, operation]() -> MediaFrameReader {
        if (!ours || ours->core() != core)
            throw Shared::platformError(operation, "a camera", winrt::result::invalidArgument,
                                        "the source is none of this capture");
        const auto worker = core->worker(operation, ours->index());
        worker->call<void>(operation, [](CameraSession& session) { session.requirePresence(); });
        return std::make_shared<FrameReader>(core, worker);
    });
}

IAsyncAction Capture::CapturePhotoToStreamAsync(const ImageEncodingProperties& encoding,
                                                const RandomAccessStream& stream) {
    constexpr std::string_view operation = "MediaCapture.CapturePhotoToStreamAsync";
    const StillRequest request{{}, stream, std::chrono::steady_clock::now()};
    const auto worker = _core->worker(operation, 0);
    if (encoding.Subtype != u"PNG" || !stream)
        throw Shared::platformError(operation, worker->path(), winrt::result::invalidArgument,
                                    "stills are written as PNG, into a stream");
    worker->call<void>(operation, [request](CameraSession& session) {
        session.requirePresence();
        session.takeStill(request);
    });
    return request.operation.operation();
}

Platform::CameraStreamState Capture::CameraStreamState() const {
    constexpr std::string_view operation = "MediaCapture.CameraStreamState";
    const bool streaming = _core->worker(operation, 0)->call<bool>(operation, [](CameraSession& session) {
        session.requirePresence();
        return session.isReading();
    });
    return streaming ? Platform::CameraStreamState::Streaming : Platform::CameraStreamState::NotStreaming;
}

} // namespace Platform::V4l2
