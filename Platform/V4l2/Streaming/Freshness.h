#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace Platform::V4l2 {

using TimePoint = std::chrono::steady_clock::time_point;

/// How many frames, whose reading out of the sensor began after an event, may still show the state before it.
struct FreshnessRule {
    unsigned afterRequest = 0; // the scene as it was before a still was asked for
    unsigned afterSetting = 0; // a setting as it was before it was changed
};

/// The rule for a class of devices, which the driver's name for the place tells ("usb-0000:00:14.0-1"). The
/// reasoning stands in Docs/cameras.md.
FreshnessRule freshnessRuleFor(const std::string& bus);

/// When a frame was taken, as far as the driver tells.
struct FrameTime {
    std::optional<TimePoint> stamp; // nothing where the driver has no usable clock
    bool atEnd = false;             // the stamp is of the end of the frame, not of its start
    TimePoint arrival;              // when it was taken from the driver
    std::uint32_t number = 0;       // within the stream; frames that found no buffer have one, too
};

/// How far apart the frames of a stream are, as far as the driver's stamps tell. The camera's thread.
class FrameRhythm {
public:
    void count(const FrameTime& frame);

    /// From a frame to the next; nothing before two that follow each other have been seen.
    std::optional<std::chrono::nanoseconds> longestInterval() const { return _longest; }

private:
    std::optional<FrameTime> _latest;
    std::optional<std::chrono::nanoseconds> _longest;
};

/// Counts the frames that began after a moment. A frame without a stamp counts by its arrival: the driver must hold
/// no full buffers at that moment. The camera's thread.
class FramesSince {
public:
    explicit FramesSince(TimePoint moment) : _moment(moment) {}

    void count(const FrameTime& frame);

    /// Whether the latest frame counted comes behind that many that were skipped.
    bool isBeyond(unsigned skipped) const { return _frames > skipped; }

    TimePoint moment() const { return _moment; }

private:
    TimePoint _moment;
    unsigned _frames = 0;
    bool _straddled = false;
};

} // namespace Platform::V4l2
