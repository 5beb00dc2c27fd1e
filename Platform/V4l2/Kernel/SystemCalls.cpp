#include "Platform/V4l2/Kernel/SystemCalls.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Platform::V4l2 {
namespace {

class LinuxSystemCalls final : public SystemCalls {
public:
    int open(const char* path, int flags) override { return ::open(path, flags); }
    int close(int descriptor) override { return ::close(descriptor); }
    int ioctl(int descriptor, unsigned long request, void* argument) override {
        return ::ioctl(descriptor, request, argument);
    }
    void* mmap(std::size_t length, int protection, int flags, int descriptor, off_t offset) override {
        return ::mmap(nullptr, length, protection, flags, descriptor, offset);
    }
    int munmap(void* address, std::size_t length) override { return ::munmap(address, length); }
    int poll(pollfd* descriptors, nfds_t count, int timeoutInMs) override {
        return ::poll(descriptors, count, timeoutInMs);
    }
};

} // namespace

std::shared_ptr<SystemCalls> linuxSystemCalls() { return std::make_shared<LinuxSystemCalls>(); }

} // namespace Platform::V4l2
