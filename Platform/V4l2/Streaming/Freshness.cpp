#include "Platform/V4l2/Streaming/Freshness.h"

#include <algorithm>

namespace Platform::V4l2 {
namespace {

// The frame that is being exposed while its predecessor is read out.
constexpr unsigned overlap = 1;
// Frames that wait within the camera: for its image processor and for its encoder or its USB buffer.
constexpr unsigned usbPipeline = 2;
constexpr unsigned sensorPipeline = 1;
// A sensor takes a new setting over at the start of a frame, for the exposure of the next one.
constexpr unsigned latch = 1;
// The firmware of a USB camera hands a setting on when it gets to it: at its next frame, at times one later.
constexpr unsigned firmware = 2;
// A kernel driver writes to the sensor at once, but that may miss the start of a frame.
constexpr unsigned missedStart = 1;

constexpr FreshnessRule usbCamera{overlap + usbPipeline, overlap + usbPipeline + latch + firmware};
constexpr FreshnessRule sensorOnBoard{overlap + sensorPipeline, overlap + sensorPipeline + latch + missedStart};

} // namespace

FreshnessRule freshnessRuleFor(const std::string& bus) { return bus.starts_with("usb-") ? usbCamera : sensorOnBoard; }

void FrameRhythm::count(const FrameTime& frame) {
    if (_latest && _latest->stamp && frame.stamp && frame.number == _latest->number + 1)
        _longest = std::max(_longest.value_or(std::chrono::nanoseconds(0)), *frame.stamp - *_latest->stamp);
    _latest = frame;
}

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
