#pragma once

#include <linux/videodev2.h>

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

namespace Platform::V4l2 {

struct FakeSize {
    std::uint32_t width;
    std::uint32_t height;
    std::vector<v4l2_fract> intervals;
};

struct FakeFormat {
    std::uint32_t code;
    std::vector<FakeSize> sizes;
};

struct FakeControl {
    std::uint32_t type = V4L2_CTRL_TYPE_INTEGER;
    std::int32_t min = 0;
    std::int32_t max = 0;
    std::int32_t step = 1;
    std::int32_t value = 0;
    std::uint32_t flags = 0;
    std::map<std::int32_t, std::int64_t> menu = {}; // entries of a menu, with the numbers of an integer menu
};

/// A frame as a test has the device deliver it.
struct FakeFrame {
    std::vector<std::uint8_t> bytes = {}; // empty: what the device's scene gives
    std::uint32_t flags = 0;              // besides those of the clock
    bool timed = true;
    bool isEmpty = false;   // neither bytes nor time, as a stalled endpoint gives
    std::uint32_t lost = 0; // frames that never arrive, before this one
};

/// What a broken driver tells; 0: the truth.
struct FakeNonsense {
    std::uint32_t index = 0;  // added to the number of each full buffer
    std::uint32_t planes = 0; // added to the number of each full buffer's planes
    std::uint32_t stride = 0; // of the second plane
};

/// A camera of the fake driver. What stands here is set before the device is used.
struct FakeDevice {
    std::string driver = "uvcvideo";
    std::string card = "Fake Camera";
    std::string bus = "usb-0000:00:14.0-1";
    std::uint32_t capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    std::vector<FakeFormat> formats;
    std::map<std::uint32_t, FakeControl> controls;
    std::uint32_t timestampFlags = V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC | V4L2_BUF_FLAG_TSTAMP_SRC_SOE;
    std::uint32_t colourSpace = V4L2_COLORSPACE_SRGB;
    /// Frames from the setting of a control to the first one that shows it.
    unsigned settingDelay = 0;
    /// What reverts to this value when the automatic is turned off; -1: it stays.
    std::int32_t exposureAfterAuto = -1;
    std::map<std::uint32_t, std::uint32_t> substitutedFormat = {}; // code asked for, code set
    /// Whoever waits on it is told of an error whenever nothing streams, as by drivers older than the kernel's present
    /// rule.
    bool complainsWithoutStream = false;
    FakeNonsense nonsense = {};

    bool isMultiPlanar() const { return (capabilities & V4L2_CAP_VIDEO_CAPTURE_MPLANE) != 0; }
};

/// A USB camera with YUYV 16x8 and 32x16 and MJPEG 32x16, exposure, focus and white balance with automatics, and
/// brightness, contrast.
FakeDevice usbCamera();

/// Brightness in YUYV that tells the exposure control's value; 16 to 235.
std::uint8_t lumaOfExposure(std::int32_t units);

} // namespace Platform::V4l2
