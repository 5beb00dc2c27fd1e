#include "Platform/V4l2/Controls/KernelControls.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace Platform::V4l2 {
namespace {

/// More than any menu has; ends the walk over one that never ends.
constexpr std::int32_t lastEntry = 255;

/// What a camera says no with, as far as USB cameras, their firmware and the kernel's own checks go.
bool isRefusal(int error) {
    switch (error) {
    case EACCES: // the control belongs to an automatic, or can only be read
    case EBUSY:
    case EILSEQ:
    case EINVAL:
    case EIO:
    case ENOTTY: // the device has no controls at all
    case EOVERFLOW:
    case EPIPE:
    case EPROTO:
    case ERANGE:
    case EREMOTE:
    case EREMOTEIO:
        return true;
    default:
        return false;
    }
}

} // namespace

template <typename Argument> bool KernelControls::request(const char* name, unsigned long request, Argument& argument) {
    _error = _node.tryControl(request, argument);
    if (_error != 0 && !isRefusal(_error))
        _node.raise(name, _error);
    return _error == 0;
}

void KernelControls::forget() {
    _known.clear();
    _entries.clear();
}

std::optional<KernelControl> KernelControls::describe(std::uint32_t id) {
    if (const auto known = _known.find(id); known != _known.end())
        return known->second;
    v4l2_queryctrl query{};
    query.id = id;
    if (!request("VIDIOC_QUERYCTRL", VIDIOC_QUERYCTRL, query)) {
        if (_error == EINVAL)
            _known[id] = std::nullopt;
        return std::nullopt;
    }
    std::optional<KernelControl> control;
    if ((query.flags & V4L2_CTRL_FLAG_DISABLED) == 0) {
        const bool isMenu = query.type == V4L2_CTRL_TYPE_MENU || query.type == V4L2_CTRL_TYPE_INTEGER_MENU;
        control = KernelControl{id, isMenu, (query.flags & V4L2_CTRL_FLAG_READ_ONLY) != 0,
                                IntegerRange{query.minimum, query.maximum, query.step}};
    }
    return _known[id] = control;
}

std::optional<std::int64_t> KernelControls::menuEntry(const KernelControl& control, std::int32_t index) {
    const std::pair key(control.id, index);
    if (const auto known = _entries.find(key); known != _entries.end())
        return known->second;
    v4l2_querymenu query{};
    query.id = control.id;
    query.index = static_cast<std::uint32_t>(index);
    if (request("VIDIOC_QUERYMENU", VIDIOC_QUERYMENU, query))
        return _entries[key] = std::int64_t{query.value}; // a copy: the kernel packs the member
    if (_error == EINVAL)
        _entries[key] = std::nullopt;
    return std::nullopt;
}

std::optional<KernelControl> KernelControls::find(const std::vector<std::uint32_t>& ids) {
    for (const std::uint32_t id : ids)
        if (const auto control = describe(id))
            return control;
    return std::nullopt;
}

std::optional<std::int32_t> KernelControls::read(const KernelControl& control) {
    v4l2_control argument{control.id, 0};
    if (!request("VIDIOC_G_CTRL", VIDIOC_G_CTRL, argument))
        return std::nullopt;
    return argument.value;
}

bool KernelControls::write(const KernelControl& control, std::int32_t value) {
    v4l2_control argument{control.id, value};
    return request("VIDIOC_S_CTRL", VIDIOC_S_CTRL, argument);
}

bool KernelControls::hasMenuEntry(const KernelControl& control, std::int32_t index) {
    if (!control.isMenu)
        return index >= control.range.min && index <= control.range.max;
    return menuEntry(control, index).has_value();
}

std::vector<std::pair<std::int32_t, std::int64_t>> KernelControls::menuNumbers(const KernelControl& control) {
    std::vector<std::pair<std::int32_t, std::int64_t>> numbers;
    if (!control.isMenu)
        return numbers; // a range of plain numbers, which may be any
    for (std::int32_t index = std::max(control.range.min, 0); index <= std::min(control.range.max, lastEntry); ++index)
        if (const auto number = menuEntry(control, index))
            numbers.emplace_back(index, *number);
    return numbers;
}

} // namespace Platform::V4l2
