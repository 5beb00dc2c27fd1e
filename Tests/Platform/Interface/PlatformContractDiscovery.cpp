#include "Tests/Platform/Interface/PlatformContract.h"

#include <algorithm>
#include <set>
#include <string>

using namespace Platform;

namespace {

/// News of a device, as a watcher may tell them.
class News final : public IDeviceInformationUpdate {
public:
    explicit News(PropertyMap properties) : _properties(std::move(properties)) {}
    std::u16string Id() const override { return u"the device"; }
    PropertyMap Properties() const override { return _properties; }

private:
    const PropertyMap _properties;
};

std::u16string inCapitals(std::u16string text) {
    for (char16_t& c : text)
        c = c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - u'a' + u'A') : c;
    return text;
}

std::u16string textOf(const Guid& guid) {
    const std::string text = guidToText(guid);
    return {text.begin(), text.end()};
}

} // namespace

TEST_P(PlatformContract, GroupsHaveIdsOfTheirOwn) {
    std::set<std::u16string> ids;
    const auto groups = blockingWait(_platform->FindAllAsync());
    for (const MediaFrameSourceGroup& group : groups)
        ids.insert(group->Id());
    EXPECT_EQ(ids.size(), groups.Size());
}

TEST_P(PlatformContract, GroupsStayInTheirOrder) {
    const auto idsNow = [this] {
        std::vector<std::u16string> ids;
        for (const MediaFrameSourceGroup& group : blockingWait(_platform->FindAllAsync()))
            ids.push_back(group->Id());
        return ids;
    };
    const auto ids = idsNow();
    EXPECT_EQ(idsNow(), ids);
    EXPECT_EQ(idsNow(), ids);
}

TEST_P(PlatformContract, SourcesHaveIdsOfTheirOwnWithinTheGroup) {
    std::set<std::u16string> ids;
    const auto infos = _settings.SourceGroup->SourceInfos();
    for (const MediaFrameSourceInfo& info : infos)
        ids.insert(info->Id());
    EXPECT_GT(infos.Size(), 0U);
    EXPECT_EQ(ids.size(), infos.Size());
}

TEST_P(PlatformContract, EverySourceHasADeviceWithAnId) {
    for (const MediaFrameSourceInfo& info : _settings.SourceGroup->SourceInfos()) {
        ASSERT_NE(info->DeviceInformation(), nullptr);
        EXPECT_FALSE(info->DeviceInformation()->Id().empty());
    }
}

TEST_P(PlatformContract, AnUnknownDeviceHasNoGroup) {
    EXPECT_EQ(codeRaisedBy([&] { blockingWait(_platform->FromIdAsync(u"no such device")); }), winrt::result::notFound);
}

TEST_P(PlatformContract, AnUnknownIdNamesNoDevice) {
    for (const auto kind : {DeviceInformationKind::DeviceContainer, DeviceInformationKind::Device})
        EXPECT_EQ(codeRaisedBy([&] { blockingWait(_platform->CreateFromIdAsync(u"no such device", {}, kind)); }),
                  winrt::result::notFound);
}

TEST_P(PlatformContract, TheNodeOfADeviceIsFoundByItsProperty) {
    const PropertyMap properties = _settings.SourceGroup->SourceInfos().GetAt(0)->DeviceInformation()->Properties();
    if (!properties.HasKey(u"System.Devices.DeviceInstanceId"))
        GTEST_SKIP() << "The device does not name its node.";
    const std::u16string id = unboxString(properties.Lookup(u"System.Devices.DeviceInstanceId"));
    const auto node = blockingWait(
        _platform->CreateFromIdAsync(id, {u"System.Devices.DeviceManufacturer"}, DeviceInformationKind::Device));
    EXPECT_EQ(node->Id(), id);
    EXPECT_EQ(node->Kind(), DeviceInformationKind::Device);
}

TEST_P(PlatformContract, TheContainerOfADeviceIsFoundWithoutRegardToCase) {
    const PropertyMap properties = _settings.SourceGroup->SourceInfos().GetAt(0)->DeviceInformation()->Properties();
    if (!properties.HasKey(u"System.Devices.ContainerId"))
        GTEST_SKIP() << "The device does not name its container.";
    const std::u16string id = textOf(unboxGuid(properties.Lookup(u"System.Devices.ContainerId")));
    for (const std::u16string& written : {id, inCapitals(id)})
        EXPECT_EQ(
            blockingWait(_platform->CreateFromIdAsync(written, {}, DeviceInformationKind::DeviceContainer))->Kind(),
            DeviceInformationKind::DeviceContainer);
}

TEST_P(PlatformContract, AnUpdateReplacesThePropertiesThatItNamesAndNoOthers) {
    const DeviceInformation device = _settings.SourceGroup->SourceInfos().GetAt(0)->DeviceInformation();
    device->Update(std::make_shared<News>(PropertyMap{{u"A", u"1"}, {u"B", u"2"}}));
    device->Update(std::make_shared<News>(PropertyMap{{u"B", u"3"}}));
    EXPECT_EQ(unboxString(device->Properties().Lookup(u"A")), u"1");
    EXPECT_EQ(unboxString(device->Properties().Lookup(u"B")), u"3");
}

TEST_P(PlatformContract, AGroupStaysAsItWasWhenItsCameraGoes) {
    const MediaFrameSourceGroup group = _settings.SourceGroup;
    const std::u16string id = group->Id();
    const std::u16string name = group->DisplayName();
    const std::u16string source = group->SourceInfos().GetAt(0)->Id();
    if (!_subject->unplug())
        GTEST_SKIP() << "This camera cannot be unplugged.";
    EXPECT_EQ(group->Id(), id);
    EXPECT_EQ(group->DisplayName(), name);
    EXPECT_EQ(group->SourceInfos().GetAt(0)->Id(), source);
}

TEST_P(PlatformContract, ObjectsServeOnWhenThePlatformHasBeenReleased) {
    const MediaCapture capture = open();
    const std::weak_ptr<CameraPlatform> released = _platform;
    _platform.reset();
    ASSERT_TRUE(released.expired());
    const MediaFrameReader reader = startReader(capture);
    const auto stream = newStream();
    blockingWait(takeStill(capture, stream));
    EXPECT_TRUE(isPng(stream));
    blockingWait(reader->StopAsync());
}
