#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/Collections.h"
#include "Platform/Interface/ImageEncodingProperties.h"
#include "Platform/Interface/MediaFrameReader.h"
#include "Platform/Interface/MediaFrameSource.h"
#include "Platform/Interface/MediaFrameSourceGroup.h"
#include "Platform/Interface/RandomAccessStream.h"
#include "Platform/Interface/VideoDeviceController.h"

#include <memory>

namespace Platform {

/// Where a still comes from: Auto lets the camera take a real photo, VideoPreview takes a frame of
/// the running stream.
enum class PhotoCaptureSource { Auto = 0, VideoPreview = 1, Photo = 2 };

enum class StreamingCaptureMode { AudioAndVideo = 0, Audio = 1, Video = 2 };

enum class CameraStreamState { NotStreaming = 0, Streaming = 1, BlockedForPrivacy = 2, Shutdown = 3 };

struct MediaCaptureInitializationSettings {
    MediaFrameSourceGroup SourceGroup;
    Platform::PhotoCaptureSource PhotoCaptureSource = PhotoCaptureSource::Auto;
    Platform::StreamingCaptureMode StreamingCaptureMode = StreamingCaptureMode::AudioAndVideo;
};

/// A camera: new, then initialised (open), then closed. In any state but initialised every member
/// raises, except InitializeAsync on a new capture and Close, which always succeeds. Of a camera that
/// is gone only StopAsync of its reader and Close succeed. Any thread. Releasing the last handle
/// closes.
class IMediaCapture {
public:
    virtual ~IMediaCapture() = default;

    virtual IAsyncAction InitializeAsync(const MediaCaptureInitializationSettings& settings) = 0;

    /// By the Id of the source, in the order of the group's SourceInfos.
    virtual MapView<MediaFrameSource> FrameSources() const = 0;
    virtual Platform::VideoDeviceController VideoDeviceController() const = 0;

    /// Fails for a null source.
    virtual IAsyncOperation<MediaFrameReader> CreateFrameReaderAsync(const MediaFrameSource& source) = 0;

    /// Writes one still into the stream, which the operation owns with the caller. An error leaves the
    /// stream empty. May also never end: on a camera that is gone or stuck.
    virtual IAsyncAction CapturePhotoToStreamAsync(const ImageEncodingProperties& encoding,
                                                   const RandomAccessStream& stream) = 0;

    virtual Platform::CameraStreamState CameraStreamState() const = 0;

    virtual void Close() = 0;
};
using MediaCapture = std::shared_ptr<IMediaCapture>;

} // namespace Platform
