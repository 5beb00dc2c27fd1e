#pragma once

#include "Services/CameraHubWeb/Hub/HubTypes.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <string>

namespace CameraHubWeb {

/// A connection that captures from one camera.
struct CameraConnection {
    CameraHub::CameraHubClient client;
    /// That of HubLook when it was made.
    std::uint64_t generation = 0;
    /// Whether the hub has the camera open for it.
    bool holdsCamera = false;
    std::chrono::steady_clock::time_point lastUse;
};

/// A connection for each camera that is in use: the hub keeps the camera open for as long as that lives. One thread at
/// a time.
class CameraConnections {
public:
    CameraConnections(CameraHub::Address address, CameraHub::Options options, std::chrono::milliseconds idleTime)
        : _address(std::move(address)), _options(std::move(options)), _idleTime(idleTime) {}

    /// The one for the camera; a new one where there is none of this generation. One that was kept is asked for the
    /// version before it is used again: nobody tells of a hub that has gone meanwhile, and a capture is not sent twice.
    /// Throws what making it and asking it throw.
    CameraConnection& get(const std::string& uid, std::uint64_t generation);

    /// The use of the connection has ended: it is kept, if it is one still.
    void release(const std::string& uid);

    /// Those that have not been used for the time.
    void dropIdle();

    /// When the next one will be idle.
    std::chrono::steady_clock::time_point nextIdle() const;

private:
    const CameraHub::Address _address;
    const CameraHub::Options _options;
    const std::chrono::milliseconds _idleTime;
    std::map<std::string, CameraConnection> _connections;
};

} // namespace CameraHubWeb
