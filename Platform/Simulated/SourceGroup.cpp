#include "Platform/Simulated/SourceGroup.h"

#include "Platform/Shared/DeviceInformationValue.h"

#include <utility>
#include <vector>

namespace Platform::Simulated {
namespace {

class SourceInfo2 final : public IMediaFrameSourceInfo2 {
public:
    explicit SourceInfo2(std::shared_ptr<const SourceDefinition> definition) : _definition(std::move(definition)) {}

    std::u16string ProfileId() const override { return _definition->profileId; }
    VectorView<MediaCaptureVideoProfileMediaDescription> VideoProfileMediaDescription() const override {
        return _definition->profiles;
    }

private:
    const std::shared_ptr<const SourceDefinition> _definition;
};

VectorView<MediaFrameSourceInfo> infosOf(const std::shared_ptr<const GroupDefinition>& group) {
    std::vector<MediaFrameSourceInfo> infos;
    infos.reserve(group->sources.size());
    for (const SourceDefinition& source : group->sources)
        infos.push_back(std::make_shared<SourceInfo>(std::shared_ptr<const SourceDefinition>(group, &source)));
    return infos;
}

} // namespace

SourceInfo::SourceInfo(std::shared_ptr<const SourceDefinition> definition)
    : _definition(std::move(definition)),
      _device(std::make_shared<Shared::DeviceInformationValue>(_definition->device)) {}

MediaFrameSourceInfo2 SourceInfo::asMediaFrameSourceInfo2() const {
    return _definition->sourceInfo2 ? std::make_shared<SourceInfo2>(_definition) : nullptr;
}

SourceGroup::SourceGroup(std::shared_ptr<const GroupDefinition> definition)
    : _definition(std::move(definition)), _sourceInfos(infosOf(_definition)) {}

} // namespace Platform::Simulated
