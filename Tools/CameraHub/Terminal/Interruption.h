#pragma once

#include <CameraHubClient/Cancellation.h>

#include <chrono>

namespace CommandLine {

/// A signal came.
class Interrupted {};

/// From its making on, a first SIGINT or SIGTERM ends what waits, so that the program can clear up; a second one ends
/// the program. One in a process, for as long as it runs.
class Interruption {
public:
    Interruption();

    /// What the clients are to be made with.
    const CameraHub::Cancellation& cancellation() const { return _cancellation; }

    /// The number of the signal that came; 0: none yet.
    static int signal();

    /// Lets SIGALRM come after that time (from 1 ms), which ends what waits as the others do.
    static void limitTo(std::chrono::milliseconds time);

    /// Throws Interrupted if one came.
    static void check();

    /// Throws Interrupted as soon as one comes.
    void waitUntil(std::chrono::steady_clock::time_point end) const;

private:
    CameraHub::Cancellation _cancellation;
};

} // namespace CommandLine
