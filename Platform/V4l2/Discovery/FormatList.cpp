#include "Platform/V4l2/Discovery/FormatList.h"

#include "Platform/Imaging/ImageSize.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace Platform::V4l2 {
namespace {

/// More than any driver lists; ends the walk over a list that never ends.
constexpr std::uint32_t maxListed = 512;

/// Where nobody tells the rate: what nearly every camera does.
constexpr double usualRate = 30.0;

struct Size {
    std::uint32_t width;
    std::uint32_t height;
};

/// The sizes offered where a camera can scale to any.
constexpr std::array commonSizes = {Size{320, 240},   Size{640, 480},   Size{800, 600},   Size{1024, 768},
                                    Size{1280, 720},  Size{1280, 960},  Size{1920, 1080}, Size{1600, 1200},
                                    Size{2560, 1440}, Size{2592, 1944}, Size{3840, 2160}, Size{4096, 3072}};

/// The rates offered where a camera can do any, frames a second.
constexpr std::array<std::uint32_t, 7> commonRates = {5, 10, 15, 20, 25, 30, 60};

/// Walks one of the kernel's lists from index 0, until `take` returns false or to its regular end, EINVAL.
/// Lists that not every driver has may lack.
template <typename Entry, typename Take>
void walk(DeviceNode& node, const char* name, unsigned long request, Entry entry, bool mayLack, Take take) {
    for (entry.index = 0; entry.index < maxListed; ++entry.index) {
        Entry current = entry;
        const int error = node.tryControl(request, current);
        if (error == EINVAL || (error == ENOTTY && mayLack))
            return;
        if (error != 0)
            node.raise(name, error);
        if (!take(current))
            return;
    }
}

bool fits(std::uint32_t value, std::uint32_t min, std::uint32_t max, std::uint32_t step) {
    return value >= min && value <= max && (value - min) % std::max(step, 1u) == 0;
}

/// The largest value on the range's grid.
std::uint32_t largestOf(std::uint32_t min, std::uint32_t max, std::uint32_t step) {
    return max > min ? max - (max - min) % std::max(step, 1u) : max;
}

/// Whether a frame of that size can be turned into a picture.
bool isUsable(const Size& size) {
    return size.width > 0 && size.height > 0 && size.width <= Imaging::maxImageSide &&
           size.height <= Imaging::maxImageSide && std::uint64_t{size.width} * size.height <= Imaging::maxImagePixels;
}

std::vector<Size> sizesWithin(const v4l2_frmsize_stepwise& range) {
    std::vector<Size> sizes;
    for (const Size& size : commonSizes)
        if (fits(size.width, range.min_width, range.max_width, range.step_width) &&
            fits(size.height, range.min_height, range.max_height, range.step_height))
            sizes.push_back(size);
    const Size largest{largestOf(range.min_width, range.max_width, range.step_width),
                       largestOf(range.min_height, range.max_height, range.step_height)};
    const bool largestListed = std::any_of(sizes.begin(), sizes.end(), [&](const Size& size) {
        return size.width == largest.width && size.height == largest.height;
    });
    if (!largestListed)
        sizes.push_back(largest);
    return sizes;
}

double seconds(const v4l2_fract& interval) {
    return static_cast<double>(interval.numerator) / static_cast<double>(interval.denominator);
}

bool isKnown(const v4l2_fract& interval) { return interval.numerator != 0 && interval.denominator != 0; }

std::vector<v4l2_fract> intervalsWithin(const v4l2_frmival_stepwise& range) {
    if (!isKnown(range.min) || !isKnown(range.max))
        return {};
    std::vector<v4l2_fract> intervals{range.max};
    for (const std::uint32_t rate : commonRates)
        if (1.0 / rate > seconds(range.min) && 1.0 / rate < seconds(range.max))
            intervals.push_back({1, rate});
    if (seconds(range.min) < seconds(range.max))
        intervals.push_back(range.min);
    return intervals;
}

class Lister {
public:
    Lister(DeviceNode& node, v4l2_buf_type type) : _node(node), _type(type) {}

    FormatList list() {
        v4l2_fmtdesc entry{};
        entry.type = _type;
        walk(_node, "VIDIOC_ENUM_FMT", VIDIOC_ENUM_FMT, entry, false, [this](const v4l2_fmtdesc& format) {
            _list.codes.push_back(format.pixelformat);
            if (const PixelFormat* const pixelFormat = findPixelFormat(format.pixelformat))
                listSizes(*pixelFormat);
            return true;
        });
        std::stable_sort(_list.formats.begin(), _list.formats.end(), [](const StreamFormat& a, const StreamFormat& b) {
            return a.pixelFormat->quality < b.pixelFormat->quality;
        });
        return std::move(_list);
    }

private:
    void listSizes(const PixelFormat& pixelFormat) {
        v4l2_frmsizeenum entry{};
        entry.pixel_format = pixelFormat.code;
        std::vector<Size> sizes;
        walk(_node, "VIDIOC_ENUM_FRAMESIZES", VIDIOC_ENUM_FRAMESIZES, entry, true, [&](const v4l2_frmsizeenum& size) {
            if (size.type != V4L2_FRMSIZE_TYPE_DISCRETE) {
                sizes = sizesWithin(size.stepwise);
                return false;
            }
            sizes.push_back({size.discrete.width, size.discrete.height});
            return true;
        });
        if (sizes.empty())
            sizes = currentSize(pixelFormat);
        for (const Size& size : sizes)
            if (isUsable(size))
                listIntervals(pixelFormat, size);
    }

    /// Where the driver lists no sizes: the one that it is set to.
    std::vector<Size> currentSize(const PixelFormat& pixelFormat) {
        v4l2_format format{};
        format.type = _type;
        _node.control("VIDIOC_G_FMT", VIDIOC_G_FMT, format);
        // The two interfaces begin with the same members.
        if (format.fmt.pix.pixelformat != pixelFormat.code)
            return {};
        return {{format.fmt.pix.width, format.fmt.pix.height}};
    }

    void listIntervals(const PixelFormat& pixelFormat, const Size& size) {
        v4l2_frmivalenum entry{};
        entry.pixel_format = pixelFormat.code;
        entry.width = size.width;
        entry.height = size.height;
        std::vector<v4l2_fract> intervals;
        walk(_node, "VIDIOC_ENUM_FRAMEINTERVALS", VIDIOC_ENUM_FRAMEINTERVALS, entry, true,
             [&](const v4l2_frmivalenum& interval) {
                 if (interval.type != V4L2_FRMIVAL_TYPE_DISCRETE) {
                     intervals = intervalsWithin(interval.stepwise);
                     return false;
                 }
                 if (isKnown(interval.discrete))
                     intervals.push_back(interval.discrete);
                 return true;
             });
        if (intervals.empty())
            intervals.push_back({});
        for (const v4l2_fract& interval : intervals)
            _list.formats.push_back({&pixelFormat, size.width, size.height, interval});
    }

    DeviceNode& _node;
    const v4l2_buf_type _type;
    FormatList _list;
};

} // namespace

double StreamFormat::frameRate() const { return isKnown(interval) ? 1.0 / seconds(interval) : usualRate; }

FormatList listFormats(DeviceNode& node, v4l2_buf_type type) { return Lister(node, type).list(); }

} // namespace Platform::V4l2
