#pragma once

#include <CameraHubClient/Cancellation.h>

#include <chrono>

namespace CameraHub {

/// How long a client waits. Each time is from 1 ms to 24 hours.
struct Options {
    /// For a connection to be made, to all addresses of the host together. The system's looking up of a name is not a
    /// part of it, and not ended by it.
    std::chrono::milliseconds connectTimeout = std::chrono::seconds(10);
    /// For one request to be answered completely; a capture may besides take its settle time. The hub does one thing
    /// at a time, so that a request waits for the captures of other clients, of which each takes up to twelve seconds.
    std::chrono::milliseconds callTimeout = std::chrono::seconds(60);
    /// What ends the calls early.
    Cancellation cancellation;
};

} // namespace CameraHub
