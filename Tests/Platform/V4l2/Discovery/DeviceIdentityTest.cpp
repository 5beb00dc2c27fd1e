#include "Platform/V4l2/Discovery/DeviceIdentity.h"

#include "Tests/Platform/V4l2/FakeKernel/FakeLister.h"

#include <gtest/gtest.h>

namespace Platform::V4l2 {
namespace {

TEST(DeviceIdentityTest, ASerialNumberFollowsTheCameraFromPortToPort) {
    VideoNode node = usbNode(2, "A1B2");
    EXPECT_EQ(deviceIdOf(node), "usb-Maker_Ltd_Model_5_A1B2-if00-video-index0");
    VideoNode moved = usbNode(4, "A1B2");
    EXPECT_EQ(deviceIdOf(moved), deviceIdOf(node));
    EXPECT_NE(deviceIdOf(usbNode(2, "A1B3")), deviceIdOf(node));
}

TEST(DeviceIdentityTest, WithoutASerialNumberThePortTellsCamerasApart) {
    const VideoNode node = usbNode(2, "");
    EXPECT_EQ(deviceIdOf(node), "usb-Maker_Ltd_Model_5-at-pci-0000:00:14.0-usb-0:2-if00-video-index0");
    EXPECT_NE(deviceIdOf(usbNode(3, "")), deviceIdOf(node));
    VideoNode again = node;
    again.devicePath = "/dev/video9"; // numbers go to whoever comes first
    again.usb->session = "1.77";
    EXPECT_EQ(deviceIdOf(again), deviceIdOf(node));
}

TEST(DeviceIdentityTest, NumbersStandForTextsThatAreMissing) {
    VideoNode node = usbNode(2, "");
    node.usb->manufacturer = "";
    node.usb->product = "";
    EXPECT_EQ(deviceIdOf(node), "usb-046d_0825-at-pci-0000:00:14.0-usb-0:2-if00-video-index0");
}

TEST(DeviceIdentityTest, WhatIsNotReadableIsReplaced) {
    VideoNode node = usbNode(2, "x/y\xFF");
    EXPECT_EQ(deviceIdOf(node), "usb-Maker_Ltd_Model_5_x_y_-if00-video-index0");
}

TEST(DeviceIdentityTest, OutsideUsbThePlaceAndTheNameOfTheNodeTell) {
    VideoNode node;
    node.place = "platform-vivid.0";
    node.name = "vivid-000-vid-cap";
    node.index = "0";
    EXPECT_EQ(deviceIdOf(node), "platform-vivid.0-vivid-000-vid-cap-video-index0");
}

TEST(DeviceIdentityTest, MakerAndModelComeFromTheDeviceThenFromTheDatabaseThenFromTheDriver) {
    VideoNode node = usbNode(1);
    node.databaseVendor = "Database Vendor";
    node.databaseModel = "Database Model";
    EXPECT_EQ(manufacturerOf(node), "Maker Ltd");
    EXPECT_EQ(modelOf(node), "Model 5");
    node.usb->manufacturer = "";
    node.usb->product = "";
    EXPECT_EQ(manufacturerOf(node), "Database Vendor");
    EXPECT_EQ(modelOf(node), "Database Model");
    node.databaseVendor = "";
    node.databaseModel = "";
    EXPECT_EQ(manufacturerOf(node), "");
    EXPECT_EQ(modelOf(node), "Fake Camera: Fake");
    node.usb.reset();
    EXPECT_EQ(manufacturerOf(node), "");
    EXPECT_EQ(modelOf(node), "Fake Camera: Fake");
}

TEST(DeviceIdentityTest, TheGuidDependsOnTheTextAlone) {
    EXPECT_EQ(hashedGuid("a"), hashedGuid("a"));
    EXPECT_NE(hashedGuid("a"), hashedGuid("b"));
    EXPECT_EQ(hashedGuid("a").Data3 >> 12, 8);
    EXPECT_EQ(hashedGuid("a").Data4[0] >> 6, 2);
}

} // namespace
} // namespace Platform::V4l2
