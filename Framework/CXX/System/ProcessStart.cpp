#include "Framework/CXX/System/ProcessStart.h"

#include <fcntl.h>
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

} // namespace Halden::System
