#pragma once

#include <CameraHubClient/Cancellation.h>

#include <chrono>

namespace CameraHub {

/// Until when something is waited for, unless it is cancelled before.
struct Deadline {
    Deadline(std::chrono::milliseconds timeFromNow, const Cancellation& cancelledBy)
        : end(std::chrono::steady_clock::now() + timeFromNow), time(timeFromNow), cancellation(cancelledBy) {}

    std::chrono::steady_clock::time_point end;
    /// How long it was, for texts.
    std::chrono::milliseconds time;
    Cancellation cancellation;
};

/// Throws Cancelled where it is.
void throwIfCancelled(const Cancellation& cancellation);

/// Waits for events of poll(), an error among them, on a file descriptor. False if the end came first; throws
/// Cancelled.
bool isReadyBefore(const Deadline& deadline, int descriptor, short events);

} // namespace CameraHub
