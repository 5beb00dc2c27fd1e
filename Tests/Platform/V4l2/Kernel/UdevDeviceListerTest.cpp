// Runs on a /sys of its own, which umockdev makes: start it through umockdev-wrapper.
#include "Platform/Interface/HresultError.h"
#include "Platform/V4l2/Discovery/DeviceIdentity.h"
#include "Platform/V4l2/Kernel/DeviceLister.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <umockdev.h>

#include <memory>
#include <string>
#include <vector>

namespace Platform::V4l2 {
namespace {

struct Unref {
    void operator()(UMockdevTestbed* testbed) const { g_object_unref(testbed); }
};

/// Keys and values, one after the other.
using Texts = std::vector<std::string>;

class UdevDeviceListerTest : public testing::Test {
protected:
    UdevDeviceListerTest() {
        if (!umockdev_in_mock_environment())
            ADD_FAILURE() << "started without umockdev-wrapper";
        pci = add("pci", "0000:00:14.0", "");
        hub = add("usb", "usb1", pci, {"devpath", "0"}, {"DEVTYPE", "usb_device"});
    }

    std::string add(const char* subsystem, const char* name, const std::string& parent, const Texts& attributes = {},
                    const Texts& properties = {}) {
        std::vector<gchar*> first = pointersTo(attributes);
        std::vector<gchar*> second = pointersTo(properties);
        const std::unique_ptr<gchar, decltype(&g_free)> path(
            umockdev_testbed_add_devicev(testbed.get(), subsystem, name, parent.empty() ? nullptr : parent.c_str(),
                                         first.data(), second.data()),
            g_free);
        return path.get();
    }

    /// The device, its video interface and its node.
    std::string addCamera(const Texts& texts = {"manufacturer", " Maker Ltd ", "product", "Model 5", "serial", "A1"}) {
        Texts attributes{"idVendor", "046d", "idProduct", "0825", "busnum", "1", "devnum", "7", "devpath", "1.2"};
        attributes.insert(attributes.end(), texts.begin(), texts.end());
        device = add("usb", "1-1.2", hub, attributes, {"DEVTYPE", "usb_device"});
        const std::string interface =
            add("usb", "1-1.2:1.0", device, {"bInterfaceNumber", "00"}, {"DEVTYPE", "usb_interface"});
        return add("video4linux", "video0", interface, {"name", "Model 5: Model 5", "index", "0", "dev", "81:0"},
                   {"DEVNAME", "/dev/video0", "MAJOR", "81", "MINOR", "0"});
    }

    const std::unique_ptr<UMockdevTestbed, Unref> testbed{umockdev_testbed_new()};
    std::string pci;
    std::string hub;
    std::string device;

private:
    static std::vector<gchar*> pointersTo(const Texts& texts) {
        std::vector<gchar*> pointers;
        for (const std::string& text : texts)
            pointers.push_back(const_cast<gchar*>(text.c_str()));
        pointers.push_back(nullptr);
        return pointers;
    }
};

TEST_F(UdevDeviceListerTest, NoNodesAreAnEmptyList) { EXPECT_TRUE(udevDeviceLister()->list().empty()); }

TEST_F(UdevDeviceListerTest, AUsbCameraIsReadFromItsDeviceItsInterfaceAndItsNode) {
    const std::string path = addCamera();
    const auto nodes = udevDeviceLister()->list();
    ASSERT_EQ(nodes.size(), 1u);
    const VideoNode& node = nodes[0];
    EXPECT_EQ(node.systemPath, path);
    EXPECT_EQ(node.devicePath, "/dev/video0");
    EXPECT_EQ(node.name, "Model 5: Model 5");
    EXPECT_EQ(node.index, "0");
    EXPECT_EQ(node.parentPath, device);
    EXPECT_EQ(node.place, "pci-0000:00:14.0-usb-0:1.2");
    ASSERT_TRUE(node.usb);
    EXPECT_EQ(*node.usb, (UsbIdentity{"046d", "0825", "Maker Ltd", "Model 5", "A1", "00", "1.7"}));
    EXPECT_EQ(deviceIdOf(node), "usb-Maker_Ltd_Model_5_A1-if00-video-index0");
}

TEST_F(UdevDeviceListerTest, TextsThatADeviceDoesNotHaveAreEmpty) {
    addCamera({});
    const auto nodes = udevDeviceLister()->list();
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_EQ(nodes[0].usb->manufacturer, "");
    EXPECT_EQ(nodes[0].usb->serial, "");
    EXPECT_EQ(deviceIdOf(nodes[0]), "usb-046d_0825-at-pci-0000:00:14.0-usb-0:1.2-if00-video-index0");
}

TEST_F(UdevDeviceListerTest, ANodeOutsideUsbHangsOnItsParent) {
    const std::string parent = add("platform", "vivid.0", "");
    add("video4linux", "video3", parent, {"name", "vivid-000-vid-cap", "index", "0", "dev", "81:3"},
        {"DEVNAME", "/dev/video3", "MAJOR", "81", "MINOR", "3"});
    const auto nodes = udevDeviceLister()->list();
    ASSERT_EQ(nodes.size(), 1u);
    EXPECT_FALSE(nodes[0].usb);
    EXPECT_EQ(nodes[0].parentPath, parent);
    EXPECT_EQ(nodes[0].place, "platform-vivid.0");
    EXPECT_EQ(deviceIdOf(nodes[0]), "platform-vivid.0-vivid-000-vid-cap-video-index0");
}

TEST_F(UdevDeviceListerTest, WhatHasNoDeviceNodeIsLeftOut) {
    add("video4linux", "video4", add("platform", "odd.0", ""), {"name", "odd"});
    EXPECT_TRUE(udevDeviceLister()->list().empty());
}

TEST_F(UdevDeviceListerTest, WithoutADescriptorToSpareItRaisesInsteadOfListingNone) {
    addCamera();
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_THROW(udevDeviceLister()->list(), winrt::hresult_error);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(udevDeviceLister()->list().size(), 1u);
}

TEST_F(UdevDeviceListerTest, TheMonitorReportsComingAndGoing) {
    const auto lister = udevDeviceLister();
    const auto monitor = lister->monitor();
    EXPECT_FALSE(monitor->receive());
    const auto next = [&]() -> std::optional<NodeEvent> {
        pollfd waited{monitor->descriptor(), POLLIN, 0};
        return ::poll(&waited, 1, 5000) == 1 ? monitor->receive() : std::nullopt;
    };
    const std::string path = addCamera();
    auto event = next();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->systemPath, path);
    EXPECT_FALSE(event->removed);
    umockdev_testbed_uevent(testbed.get(), path.c_str(), "remove");
    event = next();
    ASSERT_TRUE(event);
    EXPECT_EQ(event->systemPath, path);
    EXPECT_TRUE(event->removed);
}

} // namespace
} // namespace Platform::V4l2
