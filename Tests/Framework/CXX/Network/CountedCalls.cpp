#include "Tests/Framework/CXX/Network/CountedCalls.h"

#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdarg>

namespace {

CountedCalls* counter = nullptr;

} // namespace

CountedCalls::CountedCalls(int descriptor) : _descriptor(descriptor) { counter = this; }

CountedCalls::~CountedCalls() { counter = nullptr; }

void CountedCalls::count(const char* function, int descriptor) {
    if (counter != nullptr && counter->_descriptor == descriptor)
        ++counter->_counts[function];
}

// In place of the library's functions in the whole test program.
extern "C" {

ssize_t recv(int descriptor, void* data, size_t size, int flags) {
    CountedCalls::count("recv", descriptor);
    return syscall(SYS_recvfrom, descriptor, data, size, flags, nullptr, nullptr);
}

ssize_t send(int descriptor, const void* data, size_t size, int flags) {
    CountedCalls::count("send", descriptor);
    return syscall(SYS_sendto, descriptor, data, size, flags, nullptr, 0);
}

ssize_t sendmsg(int descriptor, const msghdr* message, int flags) {
    CountedCalls::count("sendmsg", descriptor);
    return syscall(SYS_sendmsg, descriptor, message, flags);
}

ssize_t write(int descriptor, const void* data, size_t size) {
    CountedCalls::count("write", descriptor);
    return syscall(SYS_write, descriptor, data, size);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    CountedCalls::count("ioctl", descriptor);
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    return static_cast<int>(syscall(SYS_ioctl, descriptor, request, argument));
}

int epoll_ctl(int queue, int operation, int descriptor, epoll_event* event) noexcept {
    CountedCalls::count("epoll_ctl", descriptor);
    return static_cast<int>(syscall(SYS_epoll_ctl, queue, operation, descriptor, event));
}
}
