#pragma once

#include "Platform/Interface/MediaFrameSourceGroup.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A source of frames that is nothing but its video profiles.
class FakeSourceInfo final : public Platform::IMediaFrameSourceInfo, public Platform::IMediaFrameSourceInfo2 {
public:
    using Profiles = std::vector<Platform::MediaCaptureVideoProfileMediaDescription>;

    static Platform::MediaFrameSourceInfo withProfiles(Profiles profiles) {
        auto source = std::make_shared<FakeSourceInfo>();
        source->_profiles = std::move(profiles);
        source->_self = source;
        return source;
    }

    /// As on a system that does not have the second interface.
    static Platform::MediaFrameSourceInfo withoutSecondInterface() { return std::make_shared<FakeSourceInfo>(); }

    std::u16string Id() const override { return u"source"; }
    Platform::MediaStreamType MediaStreamType() const override { return Platform::MediaStreamType::VideoPreview; }
    Platform::MediaFrameSourceKind SourceKind() const override { return Platform::MediaFrameSourceKind::Color; }
    Platform::DeviceInformation DeviceInformation() const override { return nullptr; }
    Platform::MediaFrameSourceInfo2 asMediaFrameSourceInfo2() const override { return _self.lock(); }

    std::u16string ProfileId() const override { return {}; }
    Platform::VectorView<Platform::MediaCaptureVideoProfileMediaDescription>
    VideoProfileMediaDescription() const override {
        return _profiles;
    }

private:
    Profiles _profiles;
    std::weak_ptr<FakeSourceInfo> _self;
};
