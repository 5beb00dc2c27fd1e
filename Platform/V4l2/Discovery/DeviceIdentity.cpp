#include "Platform/V4l2/Discovery/DeviceIdentity.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Platform::V4l2 {
namespace {

/// As udev does for its names: what is no letter, digit or one of #+-.:=@_ becomes "_".
std::string cleaned(std::string_view text) {
    std::string result;
    for (const char c : text) {
        const bool plain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                           std::string_view("#+-.:=@_").find(c) != std::string_view::npos;
        result += plain ? c : '_';
    }
    return result;
}

const std::string& firstOf(const std::string& preferred, const std::string& other) {
    return preferred.empty() ? other : preferred;
}

std::string usbModelName(const UsbIdentity& usb) {
    return "usb-" + cleaned(firstOf(usb.manufacturer, usb.vendorId)) + "_" +
           cleaned(firstOf(usb.product, usb.productId));
}

std::string idOf(const VideoNode& node, bool withPlace) {
    const std::string ending = "-video-index" + cleaned(node.index);
    if (!node.usb)
        return cleaned(node.place) + "-" + cleaned(node.name) + ending;
    std::string id = usbModelName(*node.usb);
    if (!node.usb->serial.empty())
        id += "_" + cleaned(node.usb->serial);
    if (withPlace)
        id += "-at-" + cleaned(node.place);
    return id + "-if" + cleaned(node.usb->interfaceNumber) + ending;
}

/// FNV-1a, 64 bits.
std::uint64_t hashOf(std::string_view text, std::uint64_t start) {
    std::uint64_t hash = start;
    for (const char c : text)
        hash = (hash ^ static_cast<std::uint8_t>(c)) * 0x100000001B3u;
    return hash;
}

} // namespace

std::string deviceIdOf(const VideoNode& node) { return idOf(node, !node.usb || node.usb->serial.empty()); }

std::string deviceIdWithPlaceOf(const VideoNode& node) { return idOf(node, true); }

std::string manufacturerOf(const VideoNode& node) {
    return node.usb ? firstOf(node.usb->manufacturer, node.databaseVendor) : node.databaseVendor;
}

std::string modelOf(const VideoNode& node) {
    return node.usb ? firstOf(node.usb->product, firstOf(node.databaseModel, node.name)) : node.name;
}

Guid hashedGuid(const std::string& text) {
    const std::uint64_t high = hashOf(text, 0xCBF29CE484222325u);
    const std::uint64_t low = hashOf(text, high);
    Guid guid;
    guid.Data1 = static_cast<std::uint32_t>(high >> 32);
    guid.Data2 = static_cast<std::uint16_t>(high >> 16);
    guid.Data3 = static_cast<std::uint16_t>((high & 0x0FFF) | 0x8000); // version 8 of RFC 9562: made our way
    for (std::size_t i = 0; i < guid.Data4.size(); ++i)
        guid.Data4.at(i) = static_cast<std::uint8_t>(low >> (56 - 8 * i));
    guid.Data4[0] = static_cast<std::uint8_t>((guid.Data4[0] & 0x3F) | 0x80);
    return guid;
}

} // namespace Platform::V4l2
