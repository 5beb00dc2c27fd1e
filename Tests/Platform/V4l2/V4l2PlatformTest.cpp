#include "Tests/Platform/V4l2/CameraFixture.h"

#include <filesystem>

namespace Platform::V4l2 {
namespace {

class V4l2PlatformTest : public CameraFixture {
protected:
    static std::u16string textOf(const DeviceInformation& device, const char16_t* key) {
        return unboxString(device->Properties().Lookup(key));
    }
};

TEST_F(V4l2PlatformTest, GroupsHaveSourcesWithDevices) {
    const auto found = group();
    EXPECT_EQ(found->Id(), u"usb-Maker_Ltd_Model_5_1234-if00-video-index0");
    EXPECT_EQ(found->DisplayName(), u"Fake Camera");
    const auto source = found->SourceInfos().GetAt(0);
    EXPECT_EQ(source->Id(), found->Id());
    EXPECT_EQ(source->MediaStreamType(), MediaStreamType::VideoPreview);
    EXPECT_EQ(source->SourceKind(), MediaFrameSourceKind::Color);
    EXPECT_EQ(source->DeviceInformation()->Id(), found->Id());
    EXPECT_EQ(source->DeviceInformation()->Name(), u"Fake Camera");
    EXPECT_EQ(source->DeviceInformation()->Kind(), DeviceInformationKind::DeviceInterface);
    EXPECT_FALSE(source->DeviceInformation()->EnclosureLocation());
}

TEST_F(V4l2PlatformTest, MakerAndModelAreFoundByTheWayOfTheProperties) {
    const auto device = group()->SourceInfos().GetAt(0)->DeviceInformation();
    const auto node = blockingWait(platform->CreateFromIdAsync(textOf(device, u"System.Devices.DeviceInstanceId"),
                                                               {u"System.Devices.DeviceManufacturer"},
                                                               DeviceInformationKind::Device));
    EXPECT_EQ(textOf(node, u"System.Devices.DeviceManufacturer"), u"Maker Ltd");
    const std::string id = guidToText(unboxGuid(device->Properties().Lookup(u"System.Devices.ContainerId")));
    const auto container = blockingWait(platform->CreateFromIdAsync(
        {id.begin(), id.end()}, {u"System.Devices.ModelName", u"System.Devices.Manufacturer"},
        DeviceInformationKind::DeviceContainer));
    EXPECT_EQ(textOf(container, u"System.Devices.ModelName"), u"Model 5");
    EXPECT_EQ(textOf(container, u"System.Devices.Manufacturer"), u"Maker Ltd");
}

TEST_F(V4l2PlatformTest, WhatIsNotThereIsNotFound) {
    EXPECT_EQ(raisedBy([&] { blockingWait(platform->FromIdAsync(u"nothing")); }),
              "80070002 MediaFrameSourceGroup.FromIdAsync on nothing: there is no such device");
    for (const auto kind : {DeviceInformationKind::Device, DeviceInformationKind::DeviceContainer})
        EXPECT_EQ(raisedBy([&] { blockingWait(platform->CreateFromIdAsync(u"nothing", {}, kind)); }),
                  "80070002 DeviceInformation.CreateFromIdAsync on nothing: there is no such device");
}

TEST_F(V4l2PlatformTest, AnUnknownSelectorIsRefused) {
    EXPECT_EQ(raisedBy([&] { platform->CreateWatcher(u"printers"); }),
              "80070057 DeviceInformation.CreateWatcher on printers: the selector matches no cameras");
}

TEST_F(V4l2PlatformTest, TheCapturesOutliveThePlatform) {
    const auto capture = open();
    setFormat(capture, 1);
    const auto reader = startReader(capture);
    platform.reset();
    const FrameClock clock(*driver, videoPath);
    EXPECT_TRUE(still(capture));
}

/// On the machine as it is, with whatever cameras it has.
TEST(V4l2PlatformOnThisMachineTest, StartsAndReportsTheCamerasThatAreThere) {
    const auto platform = createV4l2Platform();
    const auto groups = blockingWait(platform->FindAllAsync());
    // The handlers may still be running when the test ends.
    const auto added = std::make_shared<std::atomic<std::uint32_t>>(0);
    const auto completed = std::make_shared<CompletionFlag>();
    const auto watcher = platform->CreateWatcher(platform->GetDeviceSelector());
    watcher->Added([added](const DeviceWatcher&, const DeviceInformation&) {
        ++*added;
        return winrt::result::ok;
    });
    watcher->EnumerationCompleted([completed](const DeviceWatcher&) {
        completed->set();
        return winrt::result::ok;
    });
    watcher->Start();
    ASSERT_TRUE(completed->waitUntil(std::chrono::steady_clock::now() + patience));
    EXPECT_GE(*added, groups.Size()); // those that cannot be opened are in no group
    EXPECT_TRUE(*added == 0u || std::filesystem::exists("/sys/class/video4linux"));
}

} // namespace
} // namespace Platform::V4l2
