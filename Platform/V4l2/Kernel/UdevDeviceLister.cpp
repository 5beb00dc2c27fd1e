#include "Platform/Shared/ErrnoError.h"
#include "Platform/V4l2/Kernel/DeviceLister.h"
#include "Platform/V4l2/Kernel/UdevNode.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

namespace Platform::V4l2 {
namespace {

constexpr const char* subsystem = "video4linux";

bool udevRuns() { return access("/run/udev/control", F_OK) == 0; }

UdevHandle<udev> newContext() {
    UdevHandle<udev> context(udev_new());
    if (!context)
        throw Shared::errnoError("udev_new", subsystem, ENOMEM);
    return context;
}

/// An error of one device, which may have gone meanwhile, is not one of the whole list.
void requireMeans(const char* operation, int error) {
    if (error == EMFILE || error == ENFILE || error == ENOMEM)
        throw Shared::errnoError(operation, subsystem, error);
}

class UdevMonitor final : public DeviceMonitor {
public:
    UdevMonitor() : _context(newContext()) {
        _monitor.reset(udev_monitor_new_from_netlink(_context.get(), udevRuns() ? "udev" : "kernel"));
        if (!_monitor)
            throw Shared::errnoError("udev_monitor_new_from_netlink", subsystem, errno);
        require("udev_monitor_filter_add_match_subsystem_devtype",
                udev_monitor_filter_add_match_subsystem_devtype(_monitor.get(), subsystem, nullptr));
        require("udev_monitor_enable_receiving", udev_monitor_enable_receiving(_monitor.get()));
    }

    int descriptor() const override { return udev_monitor_get_fd(_monitor.get()); }

    std::optional<NodeEvent> receive() override {
        const UdevHandle<udev_device> device(udev_monitor_receive_device(_monitor.get()));
        if (!device)
            return std::nullopt;
        const char* const action = udev_device_get_action(device.get());
        return NodeEvent{udev_device_get_syspath(device.get()),
                         action != nullptr && std::string_view(action) == "remove"};
    }

private:
    static void require(const char* operation, int result) {
        if (result < 0)
            throw Shared::errnoError(operation, subsystem, -result);
    }

    const UdevHandle<udev> _context;
    UdevHandle<udev_monitor> _monitor;
};

class UdevDeviceLister final : public DeviceLister {
public:
    std::vector<VideoNode> list() override {
        // libudev's objects belong to one thread: each call has its own.
        const UdevHandle<udev> context = newContext();
        const UdevHandle<udev_enumerate> enumeration(udev_enumerate_new(context.get()));
        if (!enumeration)
            throw Shared::errnoError("udev_enumerate_new", subsystem, ENOMEM);
        udev_enumerate_add_match_subsystem(enumeration.get(), subsystem);
        // Before udev has done its part a node has not got its permissions.
        if (udevRuns())
            udev_enumerate_add_match_is_initialized(enumeration.get());
        requireMeans("udev_enumerate_scan_devices", -udev_enumerate_scan_devices(enumeration.get()));
        std::vector<VideoNode> nodes;
        udev_list_entry* entry = udev_enumerate_get_list_entry(enumeration.get());
        for (; entry != nullptr; entry = udev_list_entry_get_next(entry)) {
            const UdevHandle<udev_device> device(
                udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
            if (!device) {
                requireMeans("udev_device_new_from_syspath", errno);
                continue; // gone since
            }
            if (auto node = readVideoNode(context.get(), device.get()))
                nodes.push_back(std::move(*node));
        }
        std::sort(nodes.begin(), nodes.end(),
                  [](const VideoNode& a, const VideoNode& b) { return a.systemPath < b.systemPath; });
        return nodes;
    }

    std::unique_ptr<DeviceMonitor> monitor() override { return std::make_unique<UdevMonitor>(); }
};

} // namespace

std::shared_ptr<DeviceLister> udevDeviceLister() { return std::make_shared<UdevDeviceLister>(); }

} // namespace Platform::V4l2
