#pragma once

#include <poll.h>
#include <sys/types.h>

#include <cstddef>
#include <memory>

namespace Platform::V4l2 {

/// The system calls that cameras are reached through; nothing else in this folder makes one on a camera.
/// Each does what the call of its name does: it returns -1 (MAP_FAILED for mmap) and sets errno on
/// failure. Any thread. With one descriptor: One thread at a time.
class SystemCalls {
public:
    virtual ~SystemCalls() = default;

    virtual int open(const char* path, int flags) = 0;
    virtual int close(int descriptor) = 0;
    virtual int ioctl(int descriptor, unsigned long request, void* argument) = 0;
    virtual void* mmap(std::size_t length, int protection, int flags, int descriptor, off_t offset) = 0;
    virtual int munmap(void* address, std::size_t length) = 0;
    virtual int poll(pollfd* descriptors, nfds_t count, int timeoutInMs) = 0;
};

/// The system's own calls.
std::shared_ptr<SystemCalls> linuxSystemCalls();

} // namespace Platform::V4l2
