#pragma once

#include "Platform/Interface/MediaFrameSourceGroup.h"
#include "Platform/Simulated/Scenario/Scenario.h"

#include <memory>

namespace Platform::Simulated {

/// A source as a group describes it, from the scenario that was in force when the group was asked for. Raises
/// nothing.
class SourceInfo final : public IMediaFrameSourceInfo {
public:
    explicit SourceInfo(std::shared_ptr<const SourceDefinition> definition);

    std::u16string Id() const override { return _definition->id; }
    Platform::MediaStreamType MediaStreamType() const override { return _definition->streamType; }
    MediaFrameSourceKind SourceKind() const override { return _definition->kind; }
    Platform::DeviceInformation DeviceInformation() const override { return _device; }
    MediaFrameSourceInfo2 asMediaFrameSourceInfo2() const override;

private:
    const std::shared_ptr<const SourceDefinition> _definition;
    const Platform::DeviceInformation _device;
};

/// A group of the scenario that was in force when it was asked for. Raises nothing.
class SourceGroup final : public IMediaFrameSourceGroup {
public:
    explicit SourceGroup(std::shared_ptr<const GroupDefinition> definition);

    std::u16string Id() const override { return _definition->id; }
    std::u16string DisplayName() const override { return _definition->displayName; }
    VectorView<MediaFrameSourceInfo> SourceInfos() const override { return _sourceInfos; }

    const std::shared_ptr<const GroupDefinition>& definition() const { return _definition; }

private:
    const std::shared_ptr<const GroupDefinition> _definition;
    const VectorView<MediaFrameSourceInfo> _sourceInfos;
};

} // namespace Platform::Simulated
