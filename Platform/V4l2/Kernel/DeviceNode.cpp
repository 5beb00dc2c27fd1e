#include "Platform/V4l2/Kernel/DeviceNode.h"

#include "Platform/V4l2/Kernel/DeviceErrors.h"

#include <fcntl.h>
#include <sys/mman.h>

#include <cerrno>
#include <utility>

namespace Platform::V4l2 {

DeviceNode::DeviceNode(std::shared_ptr<SystemCalls> calls, std::string path)
    : _calls(std::move(calls)), _path(std::move(path)) {
    // Without blocking: a buffer that is not full yet is reported, not waited for.
    do
        _descriptor = _calls->open(_path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    while (_descriptor < 0 && errno == EINTR);
    if (_descriptor < 0)
        raise("open", errno);
}

DeviceNode::~DeviceNode() { _calls->close(_descriptor); }

int DeviceNode::tryIoctl(unsigned long request, void* argument) {
    for (;;) {
        if (_calls->ioctl(_descriptor, request, argument) >= 0)
            return 0;
        const int error = errno;
        if (error == EINTR)
            continue;
        if (meansUnplugged(error))
            _gone = true;
        return error;
    }
}

void DeviceNode::raise(std::string_view operation, int error) const { throw deviceError(operation, _path, error); }

void* DeviceNode::map(std::size_t length, off_t offset) {
    void* const address = _calls->mmap(length, PROT_READ | PROT_WRITE, MAP_SHARED, _descriptor, offset);
    if (address == MAP_FAILED) {
        const int error = errno;
        if (meansUnplugged(error))
            _gone = true;
        raise("mmap", error);
    }
    return address;
}

void DeviceNode::unmap(void* address, std::size_t length) { _calls->munmap(address, length); }

} // namespace Platform::V4l2
