#pragma once

#include "Platform/Interface/MediaFrameSource.h"
#include "Platform/Interface/MediaFrameSourceGroup.h"
#include "Platform/V4l2/Discovery/DeviceCatalog.h"

#include <vector>

namespace Platform::V4l2 {

/// The interface's view of a camera's nodes, as they were when it was made. Raises nothing. Any thread.
class SourceGroup final : public IMediaFrameSourceGroup {
public:
    explicit SourceGroup(CameraGroupHandle group);

    std::u16string Id() const override { return _group->id; }
    std::u16string DisplayName() const override { return _group->name; }
    VectorView<MediaFrameSourceInfo> SourceInfos() const override { return _infos; }

    /// Its sources are those of SourceInfos, in the same order.
    const CameraGroupHandle& camera() const { return _group; }

private:
    const CameraGroupHandle _group;
    const VectorView<MediaFrameSourceInfo> _infos;
};

/// The device of a source as DeviceInterface or as Device (its node).
DeviceInformation sourceDevice(const CameraGroup& group, const CameraSource& source, DeviceInformationKind kind);

/// What the watcher reports for a camera.
DeviceInformation groupDevice(const CameraGroup& group);

/// The camera as a DeviceContainer.
DeviceInformation groupContainer(const CameraGroup& group);

/// The formats of a source, in the order of its profile.
std::vector<MediaFrameFormat> frameFormats(const CameraSource& source);

} // namespace Platform::V4l2
