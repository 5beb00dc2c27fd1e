#include "Framework/CXX/Common/TextConversion.h"
#include "Tests/Platform/Simulated/SimulatedFixture.h"

#include <string>

using namespace Platform;

namespace {

class SimulatedDiscoveryTest : public SimulatedFixture {};

const char* const twoGroups = R"({
    "groups": [
        {"id": "Z", "displayName": "First", "watched": {"id": "W", "name": "Watched", "kind": 4, "properties": {"P": "1"}},
         "sources": [
            {"id": "s2", "streamType": "VideoRecord", "kind": "Infrared", "profileId": "profile",
             "device": {"id": "D2", "name": "Two", "enclosure": {"panel": 1, "inLid": true}},
             "profiles": [{"width": 1, "height": 2, "frameRate": 3.5, "subtype": "MJPG"}],
             "formats": [{"width": 4, "height": 5}, {"width": 6, "height": 7}]},
            {"id": "s1", "device": {"id": "D1"}, "sourceInfo2": false}]},
        {"id": "A"}],
    "deviceNodes": [{"id": "node", "properties": {"System.Devices.DeviceManufacturer": "Maker"}}],
    "containers": [{"id": "{ABCDEF00-0000-0000-0000-000000000001}", "properties": {"System.Devices.ModelName": "Model"}}],
    "journal": "journal.txt"})";

TEST_F(SimulatedDiscoveryTest, GroupsComeInTheOrderOfTheFile) {
    start(twoGroups);
    const auto groups = blockingWait(platform->FindAllAsync());
    ASSERT_EQ(groups.Size(), 2U);
    EXPECT_EQ(groups.GetAt(0)->Id(), u"Z");
    EXPECT_EQ(groups.GetAt(0)->DisplayName(), u"First");
    EXPECT_EQ(groups.GetAt(1)->Id(), u"A");
    EXPECT_EQ(groups.GetAt(1)->SourceInfos().Size(), 0U);
}

TEST_F(SimulatedDiscoveryTest, ASourceIsDescribedAsTheFileSays) {
    start(twoGroups);
    const auto infos = group()->SourceInfos();
    ASSERT_EQ(infos.Size(), 2U);
    const MediaFrameSourceInfo& info = infos.GetAt(0);
    EXPECT_EQ(info->Id(), u"s2");
    EXPECT_EQ(info->MediaStreamType(), MediaStreamType::VideoRecord);
    EXPECT_EQ(info->SourceKind(), MediaFrameSourceKind::Infrared);
    EXPECT_EQ(info->DeviceInformation()->Id(), u"D2");
    EXPECT_EQ(info->DeviceInformation()->Name(), u"Two");
    const auto enclosure = info->DeviceInformation()->EnclosureLocation();
    ASSERT_TRUE(enclosure);
    EXPECT_EQ(enclosure->Panel, Panel::Front);
    EXPECT_TRUE(enclosure->InLid);
    const MediaFrameSourceInfo2 info2 = info->asMediaFrameSourceInfo2();
    ASSERT_NE(info2, nullptr);
    EXPECT_EQ(info2->ProfileId(), u"profile");
    ASSERT_EQ(info2->VideoProfileMediaDescription().Size(), 1U);
    EXPECT_EQ(info2->VideoProfileMediaDescription().GetAt(0).FrameRate, 3.5);
    EXPECT_EQ(info2->VideoProfileMediaDescription().GetAt(0).Subtype, u"MJPG");
}

TEST_F(SimulatedDiscoveryTest, TheSecondSourceInfoInterfaceMayBeMissing) {
    start(twoGroups);
    EXPECT_EQ(group()->SourceInfos().GetAt(1)->asMediaFrameSourceInfo2(), nullptr);
    EXPECT_FALSE(group()->SourceInfos().GetAt(1)->DeviceInformation()->EnclosureLocation());
}

TEST_F(SimulatedDiscoveryTest, AGroupIsFoundByTheWatchedDevice) {
    start(twoGroups);
    EXPECT_EQ(blockingWait(platform->FromIdAsync(u"W"))->Id(), u"Z");
    EXPECT_EQ(blockingWait(platform->FromIdAsync(u"A"))->Id(), u"A");
    EXPECT_EQ(outcomeOf([&] { blockingWait(platform->FromIdAsync(u"Z")); }).code, winrt::result::notFound);
}

TEST_F(SimulatedDiscoveryTest, DeviceNodesAndContainersAreFoundByKind) {
    start(twoGroups);
    const auto node = blockingWait(platform->CreateFromIdAsync(u"node", {}, DeviceInformationKind::Device));
    EXPECT_EQ(node->Id(), u"node");
    EXPECT_EQ(unboxString(node->Properties().Lookup(u"System.Devices.DeviceManufacturer")), u"Maker");
    const auto container = blockingWait(platform->CreateFromIdAsync(u"{abcdef00-0000-0000-0000-000000000001}", {},
                                                                    DeviceInformationKind::DeviceContainer));
    EXPECT_EQ(unboxString(container->Properties().Lookup(u"System.Devices.ModelName")), u"Model");
}

TEST_F(SimulatedDiscoveryTest, AnIdThatNoNodeHasIsNotFound) {
    start(twoGroups);
    const auto code = [&](const std::u16string& id, DeviceInformationKind kind) {
        return outcomeOf([&] { blockingWait(platform->CreateFromIdAsync(id, {}, kind)); }).code;
    };
    const auto notFound = static_cast<winrt::hresult>(0x80070002);
    EXPECT_EQ(code(u"none", DeviceInformationKind::Device), notFound);
    EXPECT_EQ(code(u"NODE", DeviceInformationKind::Device), notFound); // only container ids ignore the case
    EXPECT_EQ(code(u"node", DeviceInformationKind::DeviceContainer), notFound);
    EXPECT_EQ(code(u"node", DeviceInformationKind::DeviceInterface), notFound);
}

TEST_F(SimulatedDiscoveryTest, FrameSourcesAndFormatsComeInTheOrderOfTheFile) {
    start(twoGroups);
    const MediaCapture capture = open();
    const auto sources = capture->FrameSources();
    std::u16string ids;
    for (const auto& entry : sources)
        ids += entry.first;
    EXPECT_EQ(ids, u"s2s1");
    const auto formats = sources.Lookup(u"s2")->SupportedFormats();
    ASSERT_EQ(formats.Size(), 2U);
    EXPECT_EQ(formats.GetAt(1).Index, 1U);
    EXPECT_EQ(formats.GetAt(1).Width, 6U);
    EXPECT_EQ(sources.Lookup(u"s1")->SupportedFormats().Size(), 0U);
}

TEST_F(SimulatedDiscoveryTest, AFormatThatTheSourceLacksIsRefused) {
    start(twoGroups);
    const MediaCapture capture = open();
    const auto source = capture->FrameSources().Lookup(u"s2");
    EXPECT_TRUE(outcomeOf([&] { blockingWait(source->SetFormatAsync({2, 6, 7, 30.0, u"NV12"})); }).raised);
    EXPECT_TRUE(outcomeOf([&] { blockingWait(source->SetFormatAsync({0, 6, 7, 30.0, u"NV12"})); }).raised);
    EXPECT_FALSE(outcomeOf([&] { blockingWait(source->SetFormatAsync({1, 6, 7, 30.0, u"NV12"})); }).raised);
}

TEST_F(SimulatedDiscoveryTest, AGroupWithoutSourcesCannotBeOpened) {
    start(twoGroups);
    const MediaCapture capture = platform->CreateMediaCapture();
    EXPECT_TRUE(outcomeOf([&] { blockingWait(capture->InitializeAsync({group(1), {}, {}})); }).raised);
}

TEST_F(SimulatedDiscoveryTest, WithoutAFileThereIsTheBuiltInCamera) {
    platform = Simulated::createSimulatedPlatform({});
    const auto groups = blockingWait(platform->FindAllAsync());
    ASSERT_EQ(groups.Size(), 1U);
    const auto info = groups.GetAt(0)->SourceInfos().GetAt(0);
    EXPECT_EQ(info->DeviceInformation()->Name(), u"Simulated Camera");
    const auto properties = info->DeviceInformation()->Properties();
    const auto node = blockingWait(platform->CreateFromIdAsync(
        unboxString(properties.Lookup(u"System.Devices.DeviceInstanceId")), {}, DeviceInformationKind::Device));
    EXPECT_NE(unboxString(node->Properties().Lookup(u"System.Devices.DeviceManufacturer")), u"");
    const auto containerId = guidToText(unboxGuid(properties.Lookup(u"System.Devices.ContainerId")));
    const auto container = blockingWait(
        platform->CreateFromIdAsync(Halden::toUtf16(containerId), {}, DeviceInformationKind::DeviceContainer));
    EXPECT_EQ(unboxString(container->Properties().Lookup(u"System.Devices.ModelName")), u"Simulated Camera");
    const MediaCapture capture = open();
    const auto capabilities = capture->VideoDeviceController()->Exposure()->Capabilities();
    EXPECT_TRUE(capabilities.Supported);
    EXPECT_EQ(capabilities.Min, -13);
    EXPECT_EQ(capabilities.Max, 0);
    EXPECT_EQ(capabilities.Step, 1);
    const auto picture = still(capture);
    EXPECT_EQ(picture.width, 1920U);
    EXPECT_EQ(picture.height, 1080U);
}

TEST_F(SimulatedDiscoveryTest, AFileThatCannotBeTakenOverFailsWithItsName) {
    const auto messageOf = [](const std::filesystem::path& path) {
        return Halden::toUtf8(outcomeOf([&] { Simulated::createSimulatedPlatform(path); }).message);
    };
    EXPECT_EQ(messageOf(file.path()), "open on " + file.path().native() + ": No such file or directory");
    EXPECT_EQ(messageOf("/no/such/folder/file.json"), "open on /no/such/folder/file.json: No such file or directory");
    file.write("{\"camera\": {}}");
    EXPECT_EQ(messageOf(file.path()), file.path().native() + ": camera: is not known here");
    file.write("{");
    EXPECT_EQ(messageOf(file.path()).rfind(file.path().native() + ": is no JSON", 0), 0U);
    file.write("{\"journal\": \"/no/such/folder/journal.txt\"}");
    EXPECT_EQ(messageOf(file.path()),
              file.path().native() + ": journal: open on /no/such/folder/journal.txt: No such file or directory");
}

} // namespace
