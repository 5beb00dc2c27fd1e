#include "Platform/V4l2/Discovery/SourceGroup.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/DeviceInformationValue.h"

#include <utility>

namespace Platform::V4l2 {
namespace {

class SourceInfo2 final : public IMediaFrameSourceInfo2 {
public:
    explicit SourceInfo2(const CameraSource& source) : _profileId(source.id) {
        std::vector<MediaCaptureVideoProfileMediaDescription> profile;
        for (const MediaFrameFormat& format : frameFormats(source))
            profile.push_back({format.Width, format.Height, format.FrameRate, format.Subtype});
        _profile = std::move(profile);
    }

    std::u16string ProfileId() const override { return _profileId; }
    VectorView<MediaCaptureVideoProfileMediaDescription> VideoProfileMediaDescription() const override {
        return _profile;
    }

private:
    const std::u16string _profileId;
    VectorView<MediaCaptureVideoProfileMediaDescription> _profile;
};

class SourceInfo final : public IMediaFrameSourceInfo {
public:
    SourceInfo(const CameraGroup& group, const CameraSource& source)
        : _id(source.id), _kind(source.description.kind),
          _device(sourceDevice(group, source, DeviceInformationKind::DeviceInterface)),
          _second(std::make_shared<SourceInfo2>(source)) {}

    std::u16string Id() const override { return _id; }
    /// Video nodes deliver a running stream, from which stills are taken.
    Platform::MediaStreamType MediaStreamType() const override { return Platform::MediaStreamType::VideoPreview; }
    MediaFrameSourceKind SourceKind() const override { return _kind; }
    Platform::DeviceInformation DeviceInformation() const override { return _device; }
    MediaFrameSourceInfo2 asMediaFrameSourceInfo2() const override { return _second; }

private:
    const std::u16string _id;
    const MediaFrameSourceKind _kind;
    const Platform::DeviceInformation _device;
    const MediaFrameSourceInfo2 _second;
};

VectorView<MediaFrameSourceInfo> infosOf(const CameraGroup& group) {
    std::vector<MediaFrameSourceInfo> infos;
    infos.reserve(group.sources.size());
    for (const CameraSource& source : group.sources)
        infos.push_back(std::make_shared<SourceInfo>(group, source));
    return infos;
}

void addText(std::vector<PropertyMap::Entry>& entries, const char16_t* key, const std::u16string& text) {
    if (!text.empty())
        entries.emplace_back(key, text);
}

DeviceInformation makeDevice(const CameraGroup& group, const std::u16string& id, DeviceInformationKind kind) {
    std::vector<PropertyMap::Entry> properties;
    properties.emplace_back(u"System.Devices.DeviceInstanceId", id);
    properties.emplace_back(u"System.Devices.ContainerId", group.container);
    addText(properties, u"System.Devices.DeviceManufacturer", group.manufacturer);
    return std::make_shared<Shared::DeviceInformationValue>(
        Shared::DeviceDescription{id, group.name, kind, std::nullopt, std::move(properties)});
}

} // namespace

SourceGroup::SourceGroup(CameraGroupHandle group) : _group(std::move(group)), _infos(infosOf(*_group)) {}

DeviceInformation sourceDevice(const CameraGroup& group, const CameraSource& source, DeviceInformationKind kind) {
    return makeDevice(group, source.id, kind);
}

DeviceInformation groupDevice(const CameraGroup& group) {
    return makeDevice(group, group.id, DeviceInformationKind::DeviceInterface);
}

DeviceInformation groupContainer(const CameraGroup& group) {
    std::vector<PropertyMap::Entry> properties;
    addText(properties, u"System.Devices.ModelName", group.model);
    addText(properties, u"System.Devices.Manufacturer", group.manufacturer);
    return std::make_shared<Shared::DeviceInformationValue>(
        Shared::DeviceDescription{Halden::toUtf16(guidToText(group.container)), group.name,
                                  DeviceInformationKind::DeviceContainer, std::nullopt, std::move(properties)});
}

std::vector<MediaFrameFormat> frameFormats(const CameraSource& source) {
    std::vector<MediaFrameFormat> formats;
    formats.reserve(source.description.formats.size());
    for (const StreamFormat& format : source.description.formats)
        formats.push_back({static_cast<std::uint32_t>(formats.size()), format.width, format.height, format.frameRate(),
                           Halden::toUtf16(pixelFormatName(format.pixelFormat->code))});
    return formats;
}

} // namespace Platform::V4l2
