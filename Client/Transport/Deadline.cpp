#include "Client/Transport/Deadline.h"

#include <CameraHubClient/Errors.h>
#include <poll.h>

#include <array>

namespace CameraHub {

void throwIfCancelled(const Cancellation& cancellation) {
    if (cancellation.isCancelled())
        throw Cancelled("cancelled");
}

bool isReadyBefore(const Deadline& deadline, int descriptor, short events) {
    std::array<pollfd, 2> entries{{{deadline.cancellation.descriptor(), POLLIN, 0}, {descriptor, events, 0}}};
    while (true) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline.end - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return false;
        // What fails is an interruption by a signal, and nothing else: it is asked again.
        if (poll(entries.data(), entries.size(), static_cast<int>(left.count())) <= 0)
            continue;
        throwIfCancelled(deadline.cancellation);
        return true;
    }
}

} // namespace CameraHub
