#pragma once

#include "Platform/V4l2/Kernel/DeviceLister.h"

#include <libudev.h>

#include <memory>
#include <optional>

namespace Platform::V4l2 {

struct UdevDeleter {
    void operator()(udev* object) const { udev_unref(object); }
    void operator()(udev_device* object) const { udev_device_unref(object); }
    void operator()(udev_enumerate* object) const { udev_enumerate_unref(object); }
    void operator()(udev_monitor* object) const { udev_monitor_unref(object); }
    void operator()(udev_hwdb* object) const { udev_hwdb_unref(object); }
};
template <typename Object> using UdevHandle = std::unique_ptr<Object, UdevDeleter>;

/// Reads what the system knows of a video node. All of it comes from /sys and the hardware database, so that a
/// camera has the same identity with and without udev. Nothing for what has no device node.
std::optional<VideoNode> readVideoNode(udev* context, udev_device* device);

} // namespace Platform::V4l2
