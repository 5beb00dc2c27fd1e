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
/// the running stream. A camera that can do only one of them takes that.
enum class PhotoCaptureSource { Auto = 0, VideoPreview = 1, Photo = 2 };

/// Which streams a capture is opened for. The platforms that there are deliver pictures in every mode, and no sound.
enum class StreamingCaptureMode { AudioAndVideo = 0, Audio = 1, Video = 2 };

/// The platforms that there are tell the first two alone.
enum class CameraStreamState { NotStreaming = 0, Streaming = 1, BlockedForPrivacy = 2, Shutdown = 3 };

/// What a capture is opened with.
struct MediaCaptureInitializationSettings {
    /// A group of the same platform; InitializeAsync refuses null.
    MediaFrameSourceGroup SourceGroup;

    /// Where stills are to come from. The hub asks for VideoPreview, and for Auto on a source of real photos.
    Platform::PhotoCaptureSource PhotoCaptureSource = PhotoCaptureSource::Auto;

    /// The hub asks for Video: it has no use for sound.
    Platform::StreamingCaptureMode StreamingCaptureMode = StreamingCaptureMode::AudioAndVideo;
};

/// A camera: new, then initialised (open), then closed; there is no way back. Any thread. Releasing the last handle
/// closes; sources, readers and controls that the capture gave out do not keep it open.
///
/// The errors of its state, which every member but InitializeAsync and Close raises, and so does every use of what the
/// capture gave out:
/// - illegalMethodCall on a new capture, closed on a closed one;
/// - notFound when the camera is gone; a camera that comes back has to be opened anew;
/// - timeout when the camera does not answer.
class IMediaCapture {
public:
    virtual ~IMediaCapture() = default;

    /// Opens the camera of the group. On a new capture only: closed or illegalMethodCall otherwise. Fails with
    /// invalidArgument for no group or one of another platform, notFound for a camera that is gone, accessDenied where
    /// the user may not open it, and busy. After a failure the capture is still new and may be initialised again.
    /// One camera may be open in several captures.
    virtual IAsyncAction InitializeAsync(const MediaCaptureInitializationSettings& settings) = 0;

    /// By the Id of the source, in the order of the group's SourceInfos; no source is null. Raises the errors of the
    /// capture's state.
    virtual MapView<MediaFrameSource> FrameSources() const = 0;

    /// Never null. Raises the errors of the capture's state.
    virtual Platform::VideoDeviceController VideoDeviceController() const = 0;

    /// A reader that does not run yet; never null. Besides the errors of the capture's state invalidArgument for a null
    /// source and for one of another capture.
    virtual IAsyncOperation<MediaFrameReader> CreateFrameReaderAsync(const MediaFrameSource& source) = 0;

    /// Writes one still into the stream, at its position, and leaves the position behind it; the operation owns the
    /// stream with the caller. The still is taken after the call, shows all settings that were made before it and has
    /// the size of the format in force. No reader needs to run, and several stills may be under way.
    ///
    /// Raised by the call itself, not by the operation: the errors of the capture's state, and invalidArgument for an
    /// encoding other than PNG and for a null stream. The operation fails with closed when the capture is closed before
    /// its end, with timeout when the camera delivers nothing fit, with fail otherwise; a failure of the camera leaves
    /// the stream as it was. The operation never ends when the camera goes before: wait with a limit.
    virtual IAsyncAction CapturePhotoToStreamAsync(const ImageEncodingProperties& encoding,
                                                   const RandomAccessStream& stream) = 0;

    /// Streaming while a reader of the capture runs, otherwise NotStreaming; stills do not count. Raises the errors of
    /// the capture's state.
    virtual Platform::CameraStreamState CameraStreamState() const = 0;

    /// Ends readers and stills, and gives the camera back before it returns. Succeeds in every state, the second time
    /// too, and on a camera that is gone.
    virtual void Close() = 0;
};
using MediaCapture = std::shared_ptr<IMediaCapture>;

} // namespace Platform
