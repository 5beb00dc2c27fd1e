#pragma once

#include "Platform/Interface/Collections.h"
#include "Platform/Interface/DeviceInformation.h"
#include "Platform/Interface/MediaCaptureVideoProfileMediaDescription.h"

#include <memory>
#include <string>

namespace Platform {

enum class MediaStreamType { VideoPreview = 0, VideoRecord = 1, Audio = 2, Photo = 3 };

enum class MediaFrameSourceKind { Custom = 0, Color = 1, Infrared = 2, Depth = 3, Audio = 4, Image = 5 };

/// The part of a source's description that older systems lack. Any thread; every member may raise.
class IMediaFrameSourceInfo2 {
public:
    virtual ~IMediaFrameSourceInfo2() = default;

    virtual std::u16string ProfileId() const = 0;
    virtual VectorView<MediaCaptureVideoProfileMediaDescription> VideoProfileMediaDescription() const = 0;
};
using MediaFrameSourceInfo2 = std::shared_ptr<IMediaFrameSourceInfo2>;

/// One source of frames within a group: one stream of one device. Any thread; every member may raise.
class IMediaFrameSourceInfo {
public:
    virtual ~IMediaFrameSourceInfo() = default;

    virtual std::u16string Id() const = 0;
    virtual Platform::MediaStreamType MediaStreamType() const = 0;
    virtual MediaFrameSourceKind SourceKind() const = 0;
    virtual Platform::DeviceInformation DeviceInformation() const = 0;

    /// Null where the platform does not have the second interface.
    virtual MediaFrameSourceInfo2 asMediaFrameSourceInfo2() const = 0;
};
using MediaFrameSourceInfo = std::shared_ptr<IMediaFrameSourceInfo>;

/// The sources that one physical camera offers together. Any thread; every member may raise.
class IMediaFrameSourceGroup {
public:
    virtual ~IMediaFrameSourceGroup() = default;

    virtual std::u16string Id() const = 0;
    virtual std::u16string DisplayName() const = 0;
    /// In the platform's order.
    virtual VectorView<MediaFrameSourceInfo> SourceInfos() const = 0;
};
using MediaFrameSourceGroup = std::shared_ptr<IMediaFrameSourceGroup>;

} // namespace Platform
