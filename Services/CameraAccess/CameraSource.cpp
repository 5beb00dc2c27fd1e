#include "Services/CameraAccess/CameraSource.h"

#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"

using Platform::blockingWait;
using Platform::MediaCaptureVideoProfileMediaDescription;
using Platform::VectorView;

bool isColourVideo(const Platform::IMediaFrameSourceInfo& source) {
    const auto type = source.MediaStreamType();
    const bool isVisual = type == Platform::MediaStreamType::Photo || type == Platform::MediaStreamType::VideoPreview ||
                          type == Platform::MediaStreamType::VideoRecord;
    return isVisual && source.SourceKind() == Platform::MediaFrameSourceKind::Color;
}

std::int32_t bestVideoProfile(const VectorView<MediaCaptureVideoProfileMediaDescription>& profiles,
                              double minimumFrameRate) {
    std::int32_t bestArea = 0;
    double bestFrameRate = 0.0;
    std::int32_t best = -1;
    for (std::uint32_t i = 0; i < profiles.Size(); ++i) {
        const auto& profile = profiles.GetAt(i);
        const auto area = static_cast<std::int32_t>(profile.Width * profile.Height);
        const bool isLarger = profile.FrameRate > minimumFrameRate && area > bestArea;
        const bool isAsLargeAndFast = area == bestArea && profile.FrameRate >= bestFrameRate;
        if (isLarger || isAsLargeAndFast) {
            bestArea = area;
            bestFrameRate = profile.FrameRate;
            best = static_cast<std::int32_t>(i);
        }
    }
    return best;
}

VectorView<MediaCaptureVideoProfileMediaDescription> videoProfilesOf(const Platform::MediaFrameSourceInfo& source) {
    const auto source2 = source->asMediaFrameSourceInfo2();
    if (!source2)
        throw winrt::hresult_error(winrt::result::noInterface, u"The source does not describe its video profiles.");
    return source2->VideoProfileMediaDescription();
}

CameraSource findCameraSource(const std::function<bool(const Platform::IDeviceInformation&)>& isWanted) {
    for (const auto& group : blockingWait(Platform::cameraPlatform()->FindAllAsync()))
        for (const auto& source : group->SourceInfos())
            if (isWanted(*source->DeviceInformation()))
                return {group, source};
    return {};
}

void openCameraSource(const Platform::MediaCapture& capture, const CameraSource& camera, std::int32_t profileIndex,
                      const ProfileChoice& pickProfile) {
    Platform::MediaCaptureInitializationSettings settings;
    settings.SourceGroup = camera.group;
    settings.PhotoCaptureSource = camera.source->MediaStreamType() == Platform::MediaStreamType::Photo
                                      ? Platform::PhotoCaptureSource::Auto
                                      : Platform::PhotoCaptureSource::VideoPreview;
    settings.StreamingCaptureMode = Platform::StreamingCaptureMode::Video;
    blockingWait(capture->InitializeAsync(settings));

    const auto frameSource = capture->FrameSources().Lookup(camera.source->Id());
    const auto formats = frameSource->SupportedFormats();
    const bool isKnownIndex = profileIndex >= 0 && static_cast<std::uint32_t>(profileIndex) < formats.Size();
    const std::int32_t index = isKnownIndex ? profileIndex : pickProfile(camera.source);
    blockingWait(frameSource->SetFormatAsync(formats.GetAt(static_cast<std::uint32_t>(index))));
}
