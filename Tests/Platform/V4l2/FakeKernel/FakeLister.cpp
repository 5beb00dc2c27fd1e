#include "Tests/Platform/V4l2/FakeKernel/FakeLister.h"

#include "Platform/Shared/ErrnoError.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>

namespace Platform::V4l2 {

struct FakeLister::Channel {
    Channel() : descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE)) {}
    ~Channel() { ::close(descriptor); }

    const int descriptor;
    std::mutex mutex;
    std::deque<NodeEvent> events;
};

class FakeLister::Monitor final : public DeviceMonitor {
public:
    explicit Monitor(std::shared_ptr<Channel> channel) : _channel(std::move(channel)) {}

    int descriptor() const override { return _channel->descriptor; }
    std::optional<NodeEvent> receive() override {
        std::lock_guard lock(_channel->mutex);
        if (_channel->events.empty())
            return std::nullopt;
        std::uint64_t count = 0;
        [[maybe_unused]] const ssize_t bytes = ::read(_channel->descriptor, &count, sizeof count);
        NodeEvent event = std::move(_channel->events.front());
        _channel->events.pop_front();
        return event;
    }

private:
    const std::shared_ptr<Channel> _channel;
};

FakeLister::~FakeLister() = default;

void FakeLister::tell(const NodeEvent& event) {
    for (const auto& weak : _channels)
        if (const auto channel = weak.lock()) {
            std::lock_guard lock(channel->mutex);
            channel->events.push_back(event);
            const std::uint64_t one = 1;
            [[maybe_unused]] const ssize_t written = ::write(channel->descriptor, &one, sizeof one);
        }
}

void FakeLister::add(VideoNode node) {
    std::lock_guard lock(_mutex);
    const std::string path = node.systemPath;
    _nodes.push_back(std::move(node));
    std::sort(_nodes.begin(), _nodes.end(),
              [](const VideoNode& a, const VideoNode& b) { return a.systemPath < b.systemPath; });
    tell({path, false});
}

void FakeLister::remove(const std::string& systemPath) {
    std::lock_guard lock(_mutex);
    std::erase_if(_nodes, [&](const VideoNode& node) { return node.systemPath == systemPath; });
    tell({systemPath, true});
}

void FakeLister::replace(VideoNode node) {
    std::lock_guard lock(_mutex);
    const std::string path = node.systemPath;
    std::erase_if(_nodes, [&](const VideoNode& known) { return known.systemPath == path; });
    _nodes.push_back(std::move(node));
    tell({path, true});
    tell({path, false});
}

void FakeLister::touch() {
    std::lock_guard lock(_mutex);
    tell({"/sys/none", false});
}

void FakeLister::refuseToMonitor(int error) {
    std::lock_guard lock(_mutex);
    _refusal = error;
}

void FakeLister::refuseToList(int error) {
    std::lock_guard lock(_mutex);
    _listRefusal = error;
}

std::vector<VideoNode> FakeLister::list() {
    std::lock_guard lock(_mutex);
    if (_listRefusal != 0)
        throw Shared::errnoError("list", "the fake lister", _listRefusal);
    return _nodes;
}

std::unique_ptr<DeviceMonitor> FakeLister::monitor() {
    std::lock_guard lock(_mutex);
    if (_refusal != 0)
        throw Shared::errnoError("monitor", "video4linux", _refusal);
    auto channel = std::make_shared<Channel>();
    _channels.push_back(channel);
    return std::make_unique<Monitor>(std::move(channel));
}

VideoNode usbNode(int number, const std::string& serial) {
    const std::string text = std::to_string(number);
    VideoNode node;
    node.systemPath = "/sys/devices/usb1/1-" + text + "/1-" + text + ":1.0/video4linux/video" + text;
    node.devicePath = "/dev/video" + text;
    node.name = "Fake Camera: Fake";
    node.index = "0";
    node.parentPath = "/sys/devices/usb1/1-" + text;
    node.place = "pci-0000:00:14.0-usb-0:" + text;
    node.usb = UsbIdentity{"046d", "0825", "Maker Ltd", "Model 5", serial, "00", "1." + text};
    return node;
}

} // namespace Platform::V4l2
