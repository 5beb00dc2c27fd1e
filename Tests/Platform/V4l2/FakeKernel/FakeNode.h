#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Tests/Platform/V4l2/FakeKernel/FakeDevice.h"

#include <sys/time.h>

#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace Platform::V4l2 {

struct FakeBuffer {
    std::vector<std::vector<std::uint8_t>> planes;
    std::vector<std::size_t> used;
    bool queued = false;
    bool done = false;
    std::uint32_t flags = 0;
    std::uint32_t sequence = 0;
    timeval time{};
};

/// The driver's side of one node of the fake driver: a member for each request, which returns 0 or the error
/// number. Used under the driver's lock.
struct FakeNode {
    FakeNode(std::string nodePath, FakeDevice what);

    v4l2_buf_type type() const {
        return device.isMultiPlanar() ? V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE : V4L2_BUF_TYPE_VIDEO_CAPTURE;
    }
    void set(const FakeFormat& format, const FakeSize& size);
    Imaging::FrameLayout layout() const;
    std::vector<std::size_t> planeSizes() const;
    std::vector<std::uint8_t> scene() const;

    int queryCapability(v4l2_capability& argument) const;
    int enumFormat(v4l2_fmtdesc& argument) const;
    int enumSizes(v4l2_frmsizeenum& argument) const;
    int enumIntervals(v4l2_frmivalenum& argument) const;
    int setFormat(v4l2_format& argument, int descriptor);
    int setParameters(v4l2_streamparm& argument, int descriptor);
    int requestBuffers(v4l2_requestbuffers& argument, int descriptor);
    int queryBuffer(v4l2_buffer& argument) const;
    int queueBuffer(v4l2_buffer& argument);
    int dequeueBuffer(v4l2_buffer& argument);
    int streamOn(int descriptor);
    int streamOff();
    int queryControl(v4l2_queryctrl& argument) const;
    int queryMenu(v4l2_querymenu& argument) const;
    int getControl(v4l2_control& argument) const;
    int setControl(v4l2_control& argument);
    void describe(v4l2_buffer& argument, std::size_t index) const;
    bool isInactive(std::uint32_t id) const;
    bool isBusyFor(int descriptor) const { return owner >= 0 && owner != descriptor; }
    const FakeFormat* formatOf(std::uint32_t code) const;
    void wake() const;
    void calm() const;
    /// Unplugged: whoever waits is told, whatever it waits for.
    void leave();

    const std::string path;
    FakeDevice device;
    bool gone = false;
    v4l2_format format{};
    v4l2_fract interval{1, 30};
    std::vector<FakeBuffer> buffers;
    std::deque<std::size_t> queue; // empty buffers, in order
    std::deque<std::size_t> full;
    bool streaming = false;
    bool awaited = false;     // frames, by the latest poll
    int owner = -1;           // the descriptor that holds the buffers
    std::map<int, int> peers; // by open descriptor: the socket at its other end
    std::uint32_t sequence = 0;
    std::deque<std::int32_t> shown; // the exposures that the next frames show
    std::vector<std::pair<std::uint32_t, std::int32_t>> writes;
};

} // namespace Platform::V4l2
