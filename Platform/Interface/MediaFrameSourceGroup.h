#pragma once

#include "Platform/Interface/Collections.h"
#include "Platform/Interface/DeviceInformation.h"
#include "Platform/Interface/MediaCaptureVideoProfileMediaDescription.h"

#include <memory>
#include <string>

namespace Platform {

/// What a source delivers. The hub streams from VideoPreview, else VideoRecord, and takes the real photos of Photo.
enum class MediaStreamType { VideoPreview = 0, VideoRecord = 1, Audio = 2, Photo = 3 };

/// What a source sees. The hub offers cameras of colour alone.
enum class MediaFrameSourceKind { Custom = 0, Color = 1, Infrared = 2, Depth = 3, Audio = 4, Image = 5 };

/// The part of a source's description that older systems lack. Any thread. Every member may raise.
class IMediaFrameSourceInfo2 {
public:
    virtual ~IMediaFrameSourceInfo2() = default;

    /// May be empty.
    virtual std::u16string ProfileId() const = 0;

    /// The picture formats, in the order of the frame source's SupportedFormats. May be empty.
    virtual VectorView<MediaCaptureVideoProfileMediaDescription> VideoProfileMediaDescription() const = 0;
};
using MediaFrameSourceInfo2 = std::shared_ptr<IMediaFrameSourceInfo2>;

/// One source of frames within a group: one stream of one device. Any thread. Every member may raise.
class IMediaFrameSourceInfo {
public:
    virtual ~IMediaFrameSourceInfo() = default;

    /// Unlike that of any other source of the group; the key of FrameSources.
    virtual std::u16string Id() const = 0;

    /// May be a number that the enumeration has no name for.
    virtual Platform::MediaStreamType MediaStreamType() const = 0;

    /// May be such a number, too: it is then no colour.
    virtual MediaFrameSourceKind SourceKind() const = 0;

    /// The device that streams; several sources may have the same. Its Id is the camera's identity towards clients: it
    /// stays when the camera is plugged in again. Never null.
    virtual Platform::DeviceInformation DeviceInformation() const = 0;

    /// Null where the platform does not have the second interface.
    virtual MediaFrameSourceInfo2 asMediaFrameSourceInfo2() const = 0;
};
using MediaFrameSourceInfo = std::shared_ptr<IMediaFrameSourceInfo>;

/// The sources that one physical camera offers together, as they were when the group was asked for: neither a change
/// nor the end of the camera changes them. Any thread. Every member may raise.
class IMediaFrameSourceGroup {
public:
    virtual ~IMediaFrameSourceGroup() = default;

    /// Unlike that of any other group of the machine.
    virtual std::u16string Id() const = 0;

    /// For people; may be empty, and the same for two cameras.
    virtual std::u16string DisplayName() const = 0;

    /// In the platform's order, which decides where the hub takes the first that fits. None is null.
    virtual VectorView<MediaFrameSourceInfo> SourceInfos() const = 0;
};
using MediaFrameSourceGroup = std::shared_ptr<IMediaFrameSourceGroup>;

} // namespace Platform
