#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Platform::V4l2 {

/// What a USB device says of itself; texts are empty where it says nothing.
struct UsbIdentity {
    std::string vendorId;  // four hexadecimal digits
    std::string productId; // four hexadecimal digits
    std::string manufacturer;
    std::string product;
    std::string serial;
    std::string interfaceNumber; // two hexadecimal digits
    std::string session;         // another one each time the device is plugged in

    bool operator==(const UsbIdentity&) const = default;
};

/// A node of the subsystem video4linux as the system knows it without opening it. UTF-8.
struct VideoNode {
    std::string systemPath; // below /sys; identifies the node while it is there
    std::string devicePath; // "/dev/video0"
    std::string name;       // the driver's name for the node
    std::string index;      // number among the nodes of one device
    std::string parentPath; // below /sys; the USB device, otherwise whatever the node belongs to
    std::string place;      // where the parent is attached: "pci-0000:00:14.0-usb-0:1.2"
    std::optional<UsbIdentity> usb;
    std::string databaseVendor; // from the hardware database, may be empty
    std::string databaseModel;  // likewise

    bool operator==(const VideoNode&) const = default;
};

struct NodeEvent {
    std::string systemPath;
    bool removed = false;
};

/// Reports nodes that come and go, from its creation on. One thread at a time.
class DeviceMonitor {
public:
    virtual ~DeviceMonitor() = default;

    /// Readable (POLLIN) while an event waits.
    virtual int descriptor() const = 0;
    /// The next event, or nothing when none waits.
    virtual std::optional<NodeEvent> receive() = 0;
};

/// Lists and watches the machine's video nodes. Any thread.
class DeviceLister {
public:
    virtual ~DeviceLister() = default;

    /// Those that are there and ready to be opened, in ascending order of systemPath. Raises winrt::hresult_error where
    /// the process has no descriptor or memory left to look.
    virtual std::vector<VideoNode> list() = 0;
    /// Raises winrt::hresult_error where watching is not possible.
    virtual std::unique_ptr<DeviceMonitor> monitor() = 0;
};

/// The system's devices, through libudev. Where udev does not run the kernel's own events are taken.
std::shared_ptr<DeviceLister> udevDeviceLister();

} // namespace Platform::V4l2
