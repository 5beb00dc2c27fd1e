#include "Platform/V4l2/Discovery/DeviceCatalog.h"

#include "Tests/Platform/V4l2/CameraFixture.h"

#include <linux/videodev2.h>

#include <cerrno>

namespace Platform::V4l2 {
namespace {

class DeviceCatalogTest : public testing::Test {
protected:
    void add(const VideoNode& node, const FakeDevice& device = usbCamera()) {
        driver->plug(node.devicePath, device);
        lister->add(node);
    }
    static FakeDevice withFormat(std::uint32_t code) {
        FakeDevice device = usbCamera();
        device.formats = {{code, {{16, 8, {{1, 30}}}}}};
        return device;
    }
    /// Another node of the same device.
    static VideoNode sibling(VideoNode node, int number, const std::string& interfaceNumber, const std::string& index) {
        node.systemPath += "." + std::to_string(number);
        node.devicePath = "/dev/video" + std::to_string(number);
        node.usb->interfaceNumber = interfaceNumber;
        node.index = index;
        return node;
    }

    const std::shared_ptr<FakeDriver> driver = std::make_shared<FakeDriver>();
    const std::shared_ptr<FakeLister> lister = std::make_shared<FakeLister>();
    DeviceCatalog catalog{driver, lister, std::make_shared<Shared::WorkerPool>(), std::chrono::milliseconds(300)};
};

TEST_F(DeviceCatalogTest, NoDevicesAreNoCameras) { EXPECT_TRUE(catalog.groups().empty()); }

TEST_F(DeviceCatalogTest, ACamerasMetadataNodeIsNoSource) {
    FakeDevice metadata = usbCamera();
    metadata.capabilities = V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING;
    add(sibling(usbNode(0), 1, "00", "1"), metadata); // comes first
    EXPECT_TRUE(catalog.groups().empty());
    add(usbNode(0));
    const auto groups = catalog.groups();
    ASSERT_EQ(groups.size(), 1u);
    ASSERT_EQ(groups[0]->sources.size(), 1u);
    EXPECT_EQ(groups[0]->id, u"usb-Maker_Ltd_Model_5_1234-if00-video-index0");
    EXPECT_EQ(groups[0]->name, u"Fake Camera");
    EXPECT_EQ(groups[0]->manufacturer, u"Maker Ltd");
    EXPECT_EQ(groups[0]->model, u"Model 5");
}

TEST_F(DeviceCatalogTest, TheNodesOfOneDeviceAreOneGroupNamedAfterTheColourNode) {
    add(usbNode(0), withFormat(V4L2_PIX_FMT_GREY));
    add(sibling(usbNode(0), 2, "02", "0"), withFormat(V4L2_PIX_FMT_YUYV));
    add(sibling(usbNode(0), 3, "04", "0"), withFormat(V4L2_PIX_FMT_Z16));
    const auto groups = catalog.groups();
    ASSERT_EQ(groups.size(), 1u);
    const auto& sources = groups[0]->sources;
    ASSERT_EQ(sources.size(), 3u);
    EXPECT_EQ(sources[0].description.kind, MediaFrameSourceKind::Color);
    EXPECT_EQ(sources[1].description.kind, MediaFrameSourceKind::Infrared);
    EXPECT_EQ(sources[2].description.kind, MediaFrameSourceKind::Depth);
    EXPECT_EQ(groups[0]->id, sources[0].id);
    EXPECT_EQ(groups[0]->id, u"usb-Maker_Ltd_Model_5_1234-if02-video-index0");
}

TEST_F(DeviceCatalogTest, TwoDevicesOfOneParentOutsideUsbAreTwoGroups) {
    for (const int number : {0, 1}) {
        VideoNode node;
        node.systemPath = "/sys/devices/platform/vivid.0/video4linux/video" + std::to_string(number);
        node.devicePath = "/dev/video" + std::to_string(number);
        node.name = "vivid-00" + std::to_string(number) + "-vid-cap";
        node.index = "0";
        node.parentPath = "/sys/devices/platform/vivid.0";
        node.place = "platform-vivid.0";
        FakeDevice device = usbCamera();
        device.bus = "platform:vivid-00" + std::to_string(number);
        add(node, device);
    }
    const auto groups = catalog.groups();
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_NE(groups[0]->id, groups[1]->id);
    EXPECT_NE(groups[0]->container, groups[1]->container);
}

TEST_F(DeviceCatalogTest, CamerasWithOneSerialNumberDifferAndKeepTheirIds) {
    add(usbNode(3, "0001"));
    const auto first = catalog.groups().at(0)->id;
    EXPECT_EQ(first, u"usb-Maker_Ltd_Model_5_0001-if00-video-index0");
    add(usbNode(1, "0001")); // before the other in the system's order
    const auto groups = catalog.groups();
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0]->id, u"usb-Maker_Ltd_Model_5_0001-at-pci-0000:00:14.0-usb-0:1-if00-video-index0");
    EXPECT_EQ(groups[1]->id, first);
}

TEST_F(DeviceCatalogTest, EachNodeIsOpenedOnce) {
    add(usbNode(0));
    catalog.groups();
    catalog.groups();
    EXPECT_EQ(driver->calls(openCall), 1u);
    EXPECT_EQ(driver->openDescriptors(), 0u);
    VideoNode again = usbNode(0);
    again.usb->session = "1.9";
    lister->replace(again);
    catalog.groups();
    EXPECT_EQ(driver->calls(openCall), 2u);
}

TEST_F(DeviceCatalogTest, ACameraThatCannotBeOpenedIsTriedAgain) {
    add(usbNode(0));
    driver->failOn(openCall, EACCES, 0, 1);
    auto groups = catalog.groups();
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_TRUE(groups[0]->sources.empty());
    ASSERT_TRUE(groups[0]->error);
    EXPECT_EQ(groups[0]->error->code(), winrt::result::accessDenied);
    groups = catalog.groups();
    EXPECT_FALSE(groups[0]->error);
    EXPECT_EQ(groups[0]->sources.size(), 1u);
}

TEST_F(DeviceCatalogTest, ADriverThatNeverAnswersCostsTheLimitOnce) {
    add(usbNode(0));
    driver->blockOn(VIDIOC_QUERYCAP);
    const auto begin = std::chrono::steady_clock::now();
    const auto groups = catalog.groups();
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(300));
    ASSERT_EQ(groups.size(), 1u);
    ASSERT_TRUE(groups[0]->error);
    EXPECT_EQ(groups[0]->error->code(), winrt::result::timeout);
    EXPECT_TRUE(catalog.groups()[0]->error);
    EXPECT_EQ(driver->calls(openCall), 1u);
    driver->release();
    EXPECT_TRUE(waitUntil([this] { return driver->openDescriptors() == 0; }));
}

TEST_F(DeviceCatalogTest, ANodeThatGoesWhileItIsLookedAtIsNoCamera) {
    add(usbNode(0));
    driver->unplug("/dev/video0");
    EXPECT_TRUE(catalog.groups().empty());
}

} // namespace
} // namespace Platform::V4l2
