#pragma once

#include "Platform/V4l2/Kernel/DeviceLister.h"

#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace Platform::V4l2 {

/// The system's devices as a test says. Any thread.
class FakeLister final : public DeviceLister, public std::enable_shared_from_this<FakeLister> {
public:
    ~FakeLister() override;

    /// The device is there; monitors are told.
    void add(VideoNode node);
    void remove(const std::string& systemPath);
    /// Out and in again before anybody looks.
    void replace(VideoNode node);
    /// Monitors are told of a change, without there being one.
    void touch();
    /// `monitor` fails with that error number.
    void refuseToMonitor(int error);
    /// `list` fails with that error number, or does not if it is 0.
    void refuseToList(int error);

    std::vector<VideoNode> list() override;
    std::unique_ptr<DeviceMonitor> monitor() override;

private:
    struct Channel;
    class Monitor;

    void tell(const NodeEvent& event);

    std::mutex _mutex; // guards all below
    std::vector<VideoNode> _nodes;
    std::vector<std::weak_ptr<Channel>> _channels;
    int _refusal = 0;
    int _listRefusal = 0;
};

/// A node of a USB camera with a serial number, on its own port, at /dev/video`number`.
VideoNode usbNode(int number, const std::string& serial = "1234");

} // namespace Platform::V4l2
