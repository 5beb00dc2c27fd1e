#pragma once

#include <chrono>
#include <cstddef>

namespace CameraHubWeb {

/// What a client may take up.
struct ServerLimits {
    std::size_t headBytes = 16 * 1024;
    std::size_t targetBytes = 4 * 1024;
    std::size_t bodyBytes = 64 * 1024;
    int connections = 1024;
    /// Of one address; those of this machine are not counted.
    int connectionsOfAddress = 256;
    /// For a head and a body to come completely, from their first byte; and for a TLS handshake.
    std::chrono::milliseconds requestTime = std::chrono::seconds(10);
    /// For a client to take anything of what it is sent.
    std::chrono::milliseconds writeTime = std::chrono::seconds(30);
    /// Between two requests of a connection, and before the first.
    std::chrono::milliseconds idleTime = std::chrono::seconds(60);
};

} // namespace CameraHubWeb
