#include "Tests/Platform/V4l2/FakeKernel/FakeNode.h"

#include "Platform/V4l2/Streaming/FrameColours.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Platform::V4l2 {
namespace {

/// As strncpy, which drivers use: a text as long as its field has no end.
void copyText(__u8* target, std::size_t size, const std::string& text) {
    std::copy_n(text.data(), std::min(size, text.size()), target);
}

} // namespace

FakeNode::FakeNode(std::string nodePath, FakeDevice what) : path(std::move(nodePath)), device(std::move(what)) {
    if (!device.formats.empty() && !device.formats.front().sizes.empty())
        set(device.formats.front(), device.formats.front().sizes.front());
    const auto exposure = device.controls.find(V4L2_CID_EXPOSURE_ABSOLUTE);
    shown.assign(device.settingDelay + 1, exposure != device.controls.end() ? exposure->second.value : 0);
}

void FakeNode::set(const FakeFormat& chosen, const FakeSize& size) {
    format = {};
    format.type = type();
    const PixelFormat* const known = findPixelFormat(chosen.code);
    Imaging::FrameLayout wanted{known != nullptr ? known->format : Imaging::FrameFormat::Jpeg, size.width, size.height};
    const auto strides = Imaging::stridesFrom(wanted.format, Imaging::planeRowBytes(wanted, 0));
    wanted.strides = strides;
    const std::size_t whole = wanted.format == Imaging::FrameFormat::Jpeg ? 4096 : Imaging::frameBytes(wanted);
    if (!device.isMultiPlanar()) {
        format.fmt.pix = {size.width,
                          size.height,
                          chosen.code,
                          V4L2_FIELD_NONE,
                          strides[0],
                          static_cast<std::uint32_t>(whole),
                          device.colourSpace,
                          V4L2_PIX_FMT_PRIV_MAGIC,
                          0,
                          {0},
                          0,
                          0};
        return;
    }
    auto& pix = format.fmt.pix_mp;
    pix.width = size.width;
    pix.height = size.height;
    pix.pixelformat = chosen.code;
    pix.colorspace = device.colourSpace;
    pix.num_planes = known->separatePlanes ? static_cast<__u8>(Imaging::planeCount(known->format)) : 1;
    for (std::size_t plane = 0; plane < pix.num_planes; ++plane) {
        pix.plane_fmt[plane].bytesperline = strides.at(plane);
        pix.plane_fmt[plane].sizeimage = static_cast<std::uint32_t>(
            pix.num_planes == 1 ? whole : std::size_t{strides.at(plane)} * Imaging::planeRows(wanted, plane));
    }
    if (device.nonsense.stride != 0)
        pix.plane_fmt[1].bytesperline = device.nonsense.stride;
}

Imaging::FrameLayout FakeNode::layout() const {
    return frameLayout(format, *findPixelFormat(format.fmt.pix.pixelformat));
}

std::vector<std::size_t> FakeNode::planeSizes() const {
    if (!device.isMultiPlanar())
        return {format.fmt.pix.sizeimage};
    std::vector<std::size_t> sizes;
    for (std::size_t plane = 0; plane < format.fmt.pix_mp.num_planes; ++plane)
        sizes.push_back(format.fmt.pix_mp.plane_fmt[plane].sizeimage);
    return sizes;
}

/// A grey picture that shows the exposure in force: samples of YUYV, or the planes of NV12.
std::vector<std::uint8_t> FakeNode::scene() const {
    std::size_t size = 0;
    for (const std::size_t plane : planeSizes())
        size += plane;
    std::vector<std::uint8_t> bytes(size, 128);
    const std::uint8_t luma = lumaOfExposure(shown.front());
    const std::size_t step = format.fmt.pix.pixelformat == V4L2_PIX_FMT_YUYV ? 2 : 1;
    const std::size_t end = step == 2 ? size : std::size_t{format.fmt.pix.width} * format.fmt.pix.height;
    for (std::size_t i = 0; i < std::min(size, end); i += step)
        bytes[i] = luma;
    return bytes;
}

int FakeNode::queryCapability(v4l2_capability& argument) const {
    argument = {};
    copyText(argument.driver, sizeof argument.driver, device.driver);
    copyText(argument.card, sizeof argument.card, device.card);
    copyText(argument.bus_info, sizeof argument.bus_info, device.bus);
    argument.device_caps = device.capabilities;
    // All nodes of a device share `capabilities`, as with a camera's metadata node.
    argument.capabilities = device.capabilities | V4L2_CAP_DEVICE_CAPS | V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE;
    return 0;
}

const FakeFormat* FakeNode::formatOf(std::uint32_t code) const {
    const auto found = std::find_if(device.formats.begin(), device.formats.end(),
                                    [&](const FakeFormat& item) { return item.code == code; });
    return found != device.formats.end() ? &*found : nullptr;
}

int FakeNode::enumFormat(v4l2_fmtdesc& argument) const {
    if (argument.type != type() || argument.index >= device.formats.size())
        return EINVAL;
    argument.pixelformat = device.formats[argument.index].code;
    return 0;
}

int FakeNode::enumSizes(v4l2_frmsizeenum& argument) const {
    const FakeFormat* const item = formatOf(argument.pixel_format);
    if (item == nullptr || argument.index >= item->sizes.size())
        return EINVAL;
    argument.type = V4L2_FRMSIZE_TYPE_DISCRETE;
    argument.discrete = {item->sizes[argument.index].width, item->sizes[argument.index].height};
    return 0;
}

int FakeNode::enumIntervals(v4l2_frmivalenum& argument) const {
    const FakeFormat* const item = formatOf(argument.pixel_format);
    if (item == nullptr)
        return EINVAL;
    for (const FakeSize& size : item->sizes)
        if (size.width == argument.width && size.height == argument.height && argument.index < size.intervals.size()) {
            argument.type = V4L2_FRMIVAL_TYPE_DISCRETE;
            argument.discrete = size.intervals[argument.index];
            return 0;
        }
    return EINVAL;
}

int FakeNode::setFormat(v4l2_format& argument, int descriptor) {
    if (argument.type != type())
        return EINVAL;
    if (isBusyFor(descriptor) || !buffers.empty())
        return EBUSY;
    std::uint32_t code = argument.fmt.pix.pixelformat;
    if (const auto other = device.substitutedFormat.find(code); other != device.substitutedFormat.end())
        code = other->second;
    const FakeFormat* item = formatOf(code);
    if (item == nullptr)
        item = &device.formats.front();
    const auto distance = [&](const FakeSize& size) {
        return std::abs(static_cast<long>(size.width) - static_cast<long>(argument.fmt.pix.width)) +
               std::abs(static_cast<long>(size.height) - static_cast<long>(argument.fmt.pix.height));
    };
    set(*item, *std::min_element(item->sizes.begin(), item->sizes.end(),
                                 [&](const auto& a, const auto& b) { return distance(a) < distance(b); }));
    argument = format;
    return 0;
}

int FakeNode::setParameters(v4l2_streamparm& argument, int descriptor) {
    if (argument.type != type())
        return EINVAL;
    if (isBusyFor(descriptor) || streaming)
        return EBUSY;
    interval = argument.parm.capture.timeperframe;
    return 0;
}

int FakeNode::requestBuffers(v4l2_requestbuffers& argument, int descriptor) {
    if (argument.type != type() || argument.memory != V4L2_MEMORY_MMAP)
        return EINVAL;
    if (isBusyFor(descriptor))
        return EBUSY;
    if (streaming && argument.count != 0)
        return EBUSY;
    buffers.clear();
    queue.clear();
    full.clear();
    streaming = false;
    owner = argument.count != 0 ? descriptor : -1;
    for (std::uint32_t i = 0; i < argument.count; ++i) {
        FakeBuffer buffer;
        for (const std::size_t size : planeSizes())
            buffer.planes.emplace_back(size);
        buffer.used.assign(buffer.planes.size(), 0);
        buffers.push_back(std::move(buffer));
    }
    return 0;
}

void FakeNode::describe(v4l2_buffer& argument, std::size_t index) const {
    const FakeBuffer& buffer = buffers[index];
    argument.index = static_cast<std::uint32_t>(index);
    argument.flags = buffer.flags;
    argument.sequence = buffer.sequence;
    argument.timestamp = buffer.time;
    const auto offsetOf = [&](std::size_t plane) { return static_cast<std::uint32_t>((index * 8 + plane) * 4096); };
    if (!device.isMultiPlanar()) {
        argument.length = static_cast<std::uint32_t>(buffer.planes[0].size());
        argument.m.offset = offsetOf(0);
        argument.bytesused = static_cast<std::uint32_t>(buffer.used[0]);
        return;
    }
    argument.length = static_cast<std::uint32_t>(buffer.planes.size());
    for (std::size_t plane = 0; plane < buffer.planes.size(); ++plane) {
        argument.m.planes[plane].length = static_cast<std::uint32_t>(buffer.planes[plane].size());
        argument.m.planes[plane].m.mem_offset = offsetOf(plane);
        argument.m.planes[plane].bytesused = static_cast<std::uint32_t>(buffer.used[plane]);
    }
}

int FakeNode::queryBuffer(v4l2_buffer& argument) const {
    if (argument.type != type() || argument.index >= buffers.size())
        return EINVAL;
    describe(argument, argument.index);
    return 0;
}

int FakeNode::queueBuffer(v4l2_buffer& argument) {
    if (argument.type != type() || argument.index >= buffers.size())
        return EINVAL;
    FakeBuffer& buffer = buffers[argument.index];
    if (buffer.queued || buffer.done || (device.isMultiPlanar() && argument.length < buffer.planes.size()))
        return EINVAL;
    buffer.queued = true;
    queue.push_back(argument.index);
    return 0;
}

int FakeNode::dequeueBuffer(v4l2_buffer& argument) {
    if (argument.type != type() || !streaming)
        return EINVAL;
    if (full.empty())
        return EAGAIN;
    const std::size_t index = full.front();
    full.pop_front();
    buffers[index].done = false;
    describe(argument, index);
    argument.index += device.nonsense.index;
    argument.length += device.nonsense.planes;
    if (full.empty())
        calm();
    return 0;
}

int FakeNode::streamOn(int descriptor) {
    if (isBusyFor(descriptor))
        return EBUSY;
    if (buffers.empty())
        return EINVAL;
    streaming = true;
    sequence = 0;
    return 0;
}

int FakeNode::streamOff() {
    streaming = false;
    queue.clear();
    full.clear();
    for (FakeBuffer& buffer : buffers)
        buffer.queued = buffer.done = false;
    calm();
    return 0;
}

/// Controls that belong to an automatic that is on.
bool FakeNode::isInactive(std::uint32_t id) const {
    const auto valueOf = [&](std::uint32_t other) {
        const auto found = device.controls.find(other);
        return found != device.controls.end() ? found->second.value : 0;
    };
    switch (id) {
    case V4L2_CID_EXPOSURE_ABSOLUTE: {
        const std::int32_t mode =
            device.controls.contains(V4L2_CID_EXPOSURE_AUTO) ? valueOf(V4L2_CID_EXPOSURE_AUTO) : V4L2_EXPOSURE_MANUAL;
        return mode == V4L2_EXPOSURE_AUTO || mode == V4L2_EXPOSURE_APERTURE_PRIORITY;
    }
    case V4L2_CID_FOCUS_ABSOLUTE:
        return valueOf(V4L2_CID_FOCUS_AUTO) != 0;
    case V4L2_CID_WHITE_BALANCE_TEMPERATURE:
        return valueOf(V4L2_CID_AUTO_WHITE_BALANCE) != 0;
    case V4L2_CID_ISO_SENSITIVITY:
        return valueOf(V4L2_CID_ISO_SENSITIVITY_AUTO) != 0;
    default:
        return false;
    }
}

int FakeNode::queryControl(v4l2_queryctrl& argument) const {
    const auto found = device.controls.find(argument.id);
    if (found == device.controls.end())
        return EINVAL;
    const FakeControl& item = found->second;
    argument.type = item.type;
    argument.minimum = item.min;
    argument.maximum = item.max;
    argument.step = item.step;
    argument.flags = item.flags | (isInactive(argument.id) ? V4L2_CTRL_FLAG_INACTIVE : 0u);
    return 0;
}

int FakeNode::queryMenu(v4l2_querymenu& argument) const {
    const auto found = device.controls.find(argument.id);
    if (found == device.controls.end())
        return EINVAL;
    const auto entry = found->second.menu.find(static_cast<std::int32_t>(argument.index));
    if (entry == found->second.menu.end())
        return EINVAL;
    argument.value = entry->second;
    return 0;
}

int FakeNode::getControl(v4l2_control& argument) const {
    const auto found = device.controls.find(argument.id);
    if (found == device.controls.end())
        return EINVAL;
    argument.value = found->second.value;
    return 0;
}

int FakeNode::setControl(v4l2_control& argument) {
    const auto found = device.controls.find(argument.id);
    if (found == device.controls.end())
        return EINVAL;
    FakeControl& item = found->second;
    if (isInactive(argument.id) || (item.flags & V4L2_CTRL_FLAG_READ_ONLY) != 0)
        return EACCES;
    const bool isMenu = item.type == V4L2_CTRL_TYPE_MENU || item.type == V4L2_CTRL_TYPE_INTEGER_MENU;
    if (isMenu && !item.menu.contains(argument.value))
        return EINVAL;
    // A negative exposure goes to the maximum, as with USB cameras.
    if (argument.id == V4L2_CID_EXPOSURE_ABSOLUTE && argument.value < 0)
        argument.value = item.max;
    item.value = std::clamp(argument.value, item.min, item.max);
    if (!isMenu)
        item.value = item.min + (item.value - item.min + item.step / 2) / item.step * item.step;
    argument.value = item.value;
    writes.emplace_back(argument.id, item.value);
    if (argument.id == V4L2_CID_EXPOSURE_AUTO && device.exposureAfterAuto >= 0)
        device.controls[V4L2_CID_EXPOSURE_ABSOLUTE].value = device.exposureAfterAuto;
    return 0;
}

void FakeNode::wake() const {
    if (const auto peer = peers.find(owner); peer != peers.end()) [[maybe_unused]]
        const ssize_t written = ::send(peer->second, "f", 1, MSG_NOSIGNAL);
}

void FakeNode::calm() const {
    char rest[VIDEO_MAX_FRAME];
    if (owner >= 0) [[maybe_unused]]
        const ssize_t bytes = ::read(owner, rest, sizeof rest);
}

void FakeNode::leave() {
    gone = true;
    for (const auto& [descriptor, peer] : peers)
        ::shutdown(peer, SHUT_RDWR);
}

} // namespace Platform::V4l2
