#include "Platform/V4l2/Kernel/UdevNode.h"

#include <string_view>

namespace Platform::V4l2 {
namespace {

std::string textOf(const char* text) { return text != nullptr ? text : ""; }

std::string attribute(udev_device* device, const char* name) {
    std::string value = textOf(udev_device_get_sysattr_value(device, name));
    const std::size_t first = value.find_first_not_of(" \t\n");
    return first == std::string::npos ? "" : value.substr(first, value.find_last_not_of(" \t\n") - first + 1);
}

/// Parents live as long as the device itself.
udev_device* parentOf(udev_device* device, const char* subsystem, const char* type) {
    return udev_device_get_parent_with_subsystem_devtype(device, subsystem, type);
}

/// As the first part of udev's by-path names: the controller that a device hangs on.
std::string controllerOf(udev_device* device) {
    if (udev_device* const pci = parentOf(device, "pci", nullptr))
        return "pci-" + textOf(udev_device_get_sysname(pci));
    if (udev_device* const platform = parentOf(device, "platform", nullptr))
        return "platform-" + textOf(udev_device_get_sysname(platform));
    if (udev_device* const parent = udev_device_get_parent(device))
        return textOf(udev_device_get_subsystem(parent)) + "-" + textOf(udev_device_get_sysname(parent));
    return "virtual";
}

/// The database writes the ids in capitals, the kernel in small letters.
std::string upperHex(std::string digits) {
    for (char& digit : digits)
        if (digit >= 'a' && digit <= 'f')
            digit = static_cast<char>(digit - 'a' + 'A');
    return digits;
}

void readDatabase(udev* context, const UsbIdentity& usb, VideoNode& node) {
    const UdevHandle<udev_hwdb> database(udev_hwdb_new(context));
    if (!database)
        return;
    const std::string key = "usb:v" + upperHex(usb.vendorId) + "p" + upperHex(usb.productId);
    udev_list_entry* entry = udev_hwdb_get_properties_list_entry(database.get(), key.c_str(), 0);
    for (; entry != nullptr; entry = udev_list_entry_get_next(entry)) {
        const std::string_view name = udev_list_entry_get_name(entry);
        if (name == "ID_VENDOR_FROM_DATABASE")
            node.databaseVendor = textOf(udev_list_entry_get_value(entry));
        else if (name == "ID_MODEL_FROM_DATABASE")
            node.databaseModel = textOf(udev_list_entry_get_value(entry));
    }
}

void readUsb(udev* context, udev_device* device, udev_device* usbDevice, VideoNode& node) {
    UsbIdentity usb;
    usb.vendorId = attribute(usbDevice, "idVendor");
    usb.productId = attribute(usbDevice, "idProduct");
    usb.manufacturer = attribute(usbDevice, "manufacturer");
    usb.product = attribute(usbDevice, "product");
    usb.serial = attribute(usbDevice, "serial");
    usb.session = attribute(usbDevice, "busnum") + "." + attribute(usbDevice, "devnum");
    if (udev_device* const interface = parentOf(device, "usb", "usb_interface"))
        usb.interfaceNumber = attribute(interface, "bInterfaceNumber");
    node.parentPath = textOf(udev_device_get_syspath(usbDevice));
    node.place = controllerOf(usbDevice) + "-usb-0:" + attribute(usbDevice, "devpath");
    readDatabase(context, usb, node);
    node.usb = usb;
}

} // namespace

std::optional<VideoNode> readVideoNode(udev* context, udev_device* device) {
    VideoNode node;
    node.systemPath = textOf(udev_device_get_syspath(device));
    node.devicePath = textOf(udev_device_get_devnode(device));
    if (node.devicePath.empty())
        return std::nullopt;
    node.name = attribute(device, "name");
    node.index = attribute(device, "index");
    if (udev_device* const usbDevice = parentOf(device, "usb", "usb_device")) {
        readUsb(context, device, usbDevice, node);
        return node;
    }
    udev_device* const parent = udev_device_get_parent(device);
    node.parentPath = textOf(parent != nullptr ? udev_device_get_syspath(parent) : nullptr);
    node.place = controllerOf(device);
    return node;
}

} // namespace Platform::V4l2
