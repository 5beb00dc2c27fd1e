#include "Tests/Platform/V4l2/FakeKernel/FakeDriver.h"

#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace Platform::V4l2 {
namespace {

timeval monotonicNow() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    const auto us = std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    return {static_cast<time_t>(us / 1'000'000), static_cast<suseconds_t>(us % 1'000'000)};
}

} // namespace

FakeDriver::FakeDriver() = default;
FakeDriver::~FakeDriver() = default;

void FakeDriver::plug(const std::string& path, FakeDevice device) {
    std::lock_guard lock(_mutex);
    _nodes[path] = std::make_shared<FakeNode>(path, std::move(device));
}

void FakeDriver::unplug(const std::string& path) {
    std::lock_guard lock(_mutex);
    const auto found = _nodes.find(path);
    if (found == _nodes.end())
        return;
    found->second->leave();
    _nodes.erase(found);
}

std::shared_ptr<FakeNode> FakeDriver::find(const std::string& path) const {
    const auto found = _nodes.find(path);
    return found != _nodes.end() ? found->second : nullptr;
}

bool FakeDriver::deliver(const std::string& path, const FakeFrame& frame) {
    std::lock_guard lock(_mutex);
    const auto node = find(path);
    if (!node || !node->streaming)
        return false;
    // A control that is set shows `settingDelay` frames later.
    const auto exposure = node->device.controls.find(V4L2_CID_EXPOSURE_ABSOLUTE);
    if (exposure != node->device.controls.end()) {
        node->shown.pop_front();
        node->shown.push_back(exposure->second.value);
    }
    node->sequence += frame.lost + 1;
    if (node->queue.empty())
        return true;
    const std::size_t index = node->queue.front();
    node->queue.pop_front();
    FakeBuffer& buffer = node->buffers[index];
    const std::vector<std::uint8_t> bytes = frame.bytes.empty() ? node->scene() : frame.bytes;
    std::size_t at = 0;
    for (std::size_t plane = 0; plane < buffer.planes.size(); ++plane) {
        const std::size_t size = frame.isEmpty ? 0 : std::min(buffer.planes[plane].size(), bytes.size() - at);
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), size, buffer.planes[plane].begin());
        buffer.used[plane] = size;
        at += size;
    }
    for (auto& [address, place] : _places)
        if (place.first == node && place.second.first == index) {
            const auto& source = buffer.planes[place.second.second];
            std::memcpy(address, source.data(), std::min(source.size(), _mappings[address].size()));
        }
    buffer.queued = false;
    buffer.done = true;
    buffer.flags = frame.flags | node->device.timestampFlags;
    buffer.sequence = node->sequence - 1;
    buffer.time = frame.timed && !frame.isEmpty ? monotonicNow() : timeval{};
    node->full.push_back(index);
    node->wake();
    return true;
}

void FakeDriver::failOn(unsigned long request, int error, unsigned after, unsigned times) {
    std::lock_guard lock(_mutex);
    _faults.push_back({request, error, after, times});
}

void FakeDriver::blockOn(unsigned long request) {
    std::lock_guard lock(_mutex);
    _blocked = request;
}

void FakeDriver::release() {
    std::lock_guard lock(_mutex);
    _blocked.reset();
    _released.notify_all();
}

void FakeDriver::heal() {
    std::lock_guard lock(_mutex);
    _faults.clear();
}

void FakeDriver::unplugAtCall(const std::string& path, unsigned call) {
    std::lock_guard lock(_mutex);
    _unplugAt = {path, call};
}

std::size_t FakeDriver::openDescriptors() const {
    std::lock_guard lock(_mutex);
    return _open.size();
}

std::size_t FakeDriver::mappings() const {
    std::lock_guard lock(_mutex);
    return _mappings.size();
}

std::size_t FakeDriver::buffers(const std::string& path) const {
    std::lock_guard lock(_mutex);
    const auto node = find(path);
    return node ? node->buffers.size() : 0;
}

std::size_t FakeDriver::emptyBuffers(const std::string& path) const {
    std::lock_guard lock(_mutex);
    const auto node = find(path);
    return node ? node->queue.size() : 0;
}

bool FakeDriver::isStreaming(const std::string& path) const {
    std::lock_guard lock(_mutex);
    const auto node = find(path);
    return node && node->streaming;
}

unsigned FakeDriver::calls(unsigned long request) const {
    std::lock_guard lock(_mutex);
    const auto found = _calls.find(request);
    return found != _calls.end() ? found->second : 0;
}

unsigned FakeDriver::allCalls() const {
    std::lock_guard lock(_mutex);
    unsigned sum = 0;
    for (const auto& entry : _calls)
        sum += entry.second;
    return sum;
}

bool FakeDriver::isBlocked() const {
    std::lock_guard lock(_mutex);
    return _waiting > 0;
}

std::int32_t FakeDriver::control(const std::string& path, std::uint32_t id) const {
    std::lock_guard lock(_mutex);
    return find(path)->device.controls.at(id).value;
}

void FakeDriver::setControl(const std::string& path, std::uint32_t id, std::int32_t value) {
    std::lock_guard lock(_mutex);
    find(path)->device.controls.at(id).value = value;
}

v4l2_fract FakeDriver::interval(const std::string& path) const {
    std::lock_guard lock(_mutex);
    return find(path)->interval;
}

std::vector<std::pair<std::uint32_t, std::int32_t>> FakeDriver::writes(const std::string& path) const {
    std::lock_guard lock(_mutex);
    return find(path)->writes;
}

/// 0, or the error that a test has asked for. Called with the lock held.
int FakeDriver::injected(unsigned long request) {
    ++_calls[request];
    if (_unplugAt && _unplugAt->second-- == 0) {
        if (const auto found = _nodes.find(_unplugAt->first); found != _nodes.end()) {
            found->second->leave();
            _nodes.erase(found);
        }
        _unplugAt.reset();
    }
    for (Fault& fault : _faults) {
        if (fault.request != request)
            continue;
        if (fault.after > 0) {
            --fault.after;
            continue;
        }
        if (fault.times == 0)
            continue;
        --fault.times;
        return fault.error;
    }
    return 0;
}

int FakeDriver::open(const char* path, int) {
    std::lock_guard lock(_mutex);
    const int error = injected(openCall);
    const auto node = find(path);
    if (error != 0 || !node) {
        errno = error != 0 ? error : ENOENT;
        return -1;
    }
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0)
        return -1;
    _open[ends[0]] = node;
    node->peers[ends[0]] = ends[1];
    return ends[0];
}

int FakeDriver::close(int descriptor) {
    std::lock_guard lock(_mutex);
    const auto found = _open.find(descriptor);
    if (found == _open.end()) {
        errno = EBADF;
        return -1;
    }
    const auto node = found->second;
    _open.erase(found);
    if (node->owner == descriptor) {
        node->streamOff();
        node->buffers.clear();
        node->owner = -1;
    }
    ::close(node->peers.at(descriptor));
    node->peers.erase(descriptor);
    return ::close(descriptor);
}

int FakeDriver::ioctl(int descriptor, unsigned long request, void* argument) {
    std::unique_lock lock(_mutex);
    if (_blocked == request) {
        ++_waiting;
        _released.wait(lock, [this] { return !_blocked; });
        --_waiting;
    }
    const auto found = _open.find(descriptor);
    if (found == _open.end()) {
        errno = EBADF;
        return -1;
    }
    const auto node = found->second;
    int error = injected(request);
    if (node->gone)
        error = ENODEV;
    if (error == 0)
        error = dispatch(*node, descriptor, request, argument);
    if (error == 0)
        return 0;
    errno = error;
    return -1;
}

int FakeDriver::dispatch(FakeNode& node, int descriptor, unsigned long request, void* argument) {
    switch (request) {
    case VIDIOC_QUERYCAP:
        return node.queryCapability(*static_cast<v4l2_capability*>(argument));
    case VIDIOC_ENUM_FMT:
        return node.enumFormat(*static_cast<v4l2_fmtdesc*>(argument));
    case VIDIOC_ENUM_FRAMESIZES:
        return node.enumSizes(*static_cast<v4l2_frmsizeenum*>(argument));
    case VIDIOC_ENUM_FRAMEINTERVALS:
        return node.enumIntervals(*static_cast<v4l2_frmivalenum*>(argument));
    case VIDIOC_G_FMT:
        *static_cast<v4l2_format*>(argument) = node.format;
        return 0;
    case VIDIOC_S_FMT:
        return node.setFormat(*static_cast<v4l2_format*>(argument), descriptor);
    case VIDIOC_S_PARM:
        return node.setParameters(*static_cast<v4l2_streamparm*>(argument), descriptor);
    case VIDIOC_REQBUFS:
        return node.requestBuffers(*static_cast<v4l2_requestbuffers*>(argument), descriptor);
    case VIDIOC_QUERYBUF:
        return node.queryBuffer(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_QBUF:
        return node.queueBuffer(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_DQBUF:
        return node.dequeueBuffer(*static_cast<v4l2_buffer*>(argument));
    case VIDIOC_STREAMON:
        return node.streamOn(descriptor);
    case VIDIOC_STREAMOFF:
        return node.streamOff();
    case VIDIOC_QUERYCTRL:
        return node.queryControl(*static_cast<v4l2_queryctrl*>(argument));
    case VIDIOC_QUERYMENU:
        return node.queryMenu(*static_cast<v4l2_querymenu*>(argument));
    case VIDIOC_G_CTRL:
        return node.getControl(*static_cast<v4l2_control*>(argument));
    case VIDIOC_S_CTRL:
        return node.setControl(*static_cast<v4l2_control*>(argument));
    default:
        return ENOTTY;
    }
}

void* FakeDriver::mmap(std::size_t length, int, int, int descriptor, off_t offset) {
    std::lock_guard lock(_mutex);
    const auto found = _open.find(descriptor);
    int error = injected(mapCall);
    const std::size_t index = static_cast<std::size_t>(offset) / 4096 / 8;
    const std::size_t plane = static_cast<std::size_t>(offset) / 4096 % 8;
    if (error == 0 && found == _open.end())
        error = EBADF;
    if (error == 0 && found->second->gone)
        error = ENODEV;
    if (error == 0 && (index >= found->second->buffers.size() || plane >= found->second->buffers[index].planes.size() ||
                       length > found->second->buffers[index].planes[plane].size()))
        error = EINVAL;
    if (error != 0) {
        errno = error;
        return MAP_FAILED;
    }
    std::vector<std::uint8_t> memory(length);
    void* const address = memory.data();
    _mappings[address] = std::move(memory);
    _places[address] = {found->second, {index, plane}};
    return address;
}

int FakeDriver::munmap(void* address, std::size_t length) {
    std::lock_guard lock(_mutex);
    const auto found = _mappings.find(address);
    if (found == _mappings.end() || found->second.size() != length) {
        errno = EINVAL;
        return -1;
    }
    _mappings.erase(found);
    _places.erase(address);
    return 0;
}

bool FakeDriver::hasComplaint(const pollfd* descriptors, nfds_t count) const {
    std::lock_guard lock(_mutex);
    return std::any_of(descriptors, descriptors + count, [this](const pollfd& waited) {
        const auto found = _open.find(waited.fd);
        return found != _open.end() && found->second->device.complainsWithoutStream && !found->second->streaming;
    });
}

bool FakeDriver::isAwaited(const std::string& path) const {
    std::lock_guard lock(_mutex);
    const auto node = find(path);
    return node && node->awaited;
}

void FakeDriver::noteWhatIsAwaited(const pollfd* descriptors, nfds_t count) {
    std::lock_guard lock(_mutex);
    for (nfds_t i = 0; i < count; ++i)
        if (const auto found = _open.find(descriptors[i].fd); found != _open.end())
            found->second->awaited = (descriptors[i].events & POLLIN) != 0;
}

int FakeDriver::poll(pollfd* descriptors, nfds_t count, int timeoutInMs) {
    noteWhatIsAwaited(descriptors, count);
    const int ready = ::poll(descriptors, count, hasComplaint(descriptors, count) ? 0 : timeoutInMs);
    if (ready < 0)
        return ready;
    std::lock_guard lock(_mutex);
    ++_calls[pollCall];
    for (nfds_t i = 0; i < count; ++i) {
        const auto found = _open.find(descriptors[i].fd);
        if (found == _open.end())
            continue;
        if (found->second->gone)
            descriptors[i].revents = POLLERR | POLLHUP;
        else if (!found->second->streaming &&
                 ((descriptors[i].events & POLLIN) != 0 || found->second->device.complainsWithoutStream))
            descriptors[i].revents = POLLERR;
    }
    return static_cast<int>(
        std::count_if(descriptors, descriptors + count, [](const pollfd& p) { return p.revents != 0; }));
}

} // namespace Platform::V4l2
