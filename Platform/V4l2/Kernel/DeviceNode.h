#pragma once

#include "Platform/V4l2/Kernel/SystemCalls.h"

#include <linux/videodev2.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace Platform::V4l2 {

/// An open device node. Failures are winrt::hresult_errors that name operation, device and reason.
/// One thread at a time.
class DeviceNode {
public:
    /// Opens the node. Raises.
    DeviceNode(std::shared_ptr<SystemCalls> calls, std::string path);
    ~DeviceNode();
    DeviceNode(const DeviceNode&) = delete;
    DeviceNode& operator=(const DeviceNode&) = delete;

    const std::string& path() const { return _path; }
    int descriptor() const { return _descriptor; }

    /// True once a call has found that the device is there no more.
    bool isGone() const { return _gone; }

    /// 0 or the error number. Repeats a call that a signal interrupted.
    template <typename Argument> int tryControl(unsigned long request, Argument& argument) {
        return tryIoctl(request, &argument);
    }

    /// Raises where the call fails. `name` is the request's.
    template <typename Argument> void control(std::string_view name, unsigned long request, Argument& argument) {
        if (const int error = tryControl(request, argument); error != 0)
            raise(name, error);
    }

    [[noreturn]] void raise(std::string_view operation, int error) const;

    /// Maps a buffer for reading and writing. Raises.
    void* map(std::size_t length, off_t offset);
    void unmap(void* address, std::size_t length);

private:
    int tryIoctl(unsigned long request, void* argument);

    const std::shared_ptr<SystemCalls> _calls;
    const std::string _path;
    int _descriptor = -1;
    bool _gone = false;
};

} // namespace Platform::V4l2
