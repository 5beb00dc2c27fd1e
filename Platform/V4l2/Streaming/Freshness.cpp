#include "Platform/V4l2/Streaming/Freshness.h"

namespace Platform::V4l2 {
namespace {

// The frame that is being exposed while its predecessor is read out.
constexpr unsigned Overlap = 1;
// Frames that wait within the camera: for its image processor and for its encoder or its USB buffer.
constexpr unsigned UsbPipeline = 2;
constexpr unsigned SensorPipeline = 1;
// A sensor takes a new setting over at the start of a frame, for the exposure of the next one.
constexpr unsigned Latch = 1;
// The firmware of a USB camera hands a setting on when it gets to it: at its next frame, at times one later.
constexpr unsigned Firmware = 2;
// A kernel driver writes to the sensor at once, but that may miss the start of a frame.
constexpr unsigned MissedStart = 1;

constexpr FreshnessRule UsbCamera{Overlap + UsbPipeline, Overlap + UsbPipeline + Latch + Firmware};
constexpr FreshnessRule SensorOnBoard{Overlap + SensorPipeline, Overlap + SensorPipeline + Latch + MissedStart};

} // namespace

FreshnessRule freshnessRuleFor(const std::string& bus) { return bus.starts_with("usb-") ? UsbCamera : SensorOnBoard; }

void FramesSince::count(const FrameTime& frame) {
    if (frame.stamp.value_or(frame.arrival) <= _moment)
        return;
    // Of a frame that only its end or its arrival is known of, the first one may have begun before.
    if ((!frame.stamp || frame.atEnd) && !_straddled) {
        _straddled = true;
        return;
    }
    ++_frames;
}

} // namespace Platform::V4l2
