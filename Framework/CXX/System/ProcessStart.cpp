#include "Framework/CXX/System/ProcessStart.h"

#include <fcntl.h>
#include <malloc.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>
#include <tuple>

namespace Halden::System {

void openMissingStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(stream, F_GETFD) < 0)
            std::ignore = open("/dev/null", O_RDWR); // gets the lowest number that is free, which is this one
}

void surviveFailedWrites() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void keepFreedMemory() {
    // What the largest still holds at once; more than that goes back when it is freed.
    constexpr int most = 512 * 1024 * 1024; // bytes
    ::mallopt(M_TRIM_THRESHOLD, most);
    ::mallopt(M_MMAP_MAX, 0);  // blocks of their own would go back at once
    ::mallopt(M_ARENA_MAX, 1); // what one thread has freed, any may have
}

} // namespace Halden::System
