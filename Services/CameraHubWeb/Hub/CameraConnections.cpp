#include "Services/CameraHubWeb/Hub/CameraConnections.h"

#include "Services/CameraHubWeb/Hub/Connecting.h"

#include <algorithm>
#include <utility>

namespace CameraHubWeb {
namespace {

using Clock = std::chrono::steady_clock;

} // namespace

CameraConnection& CameraConnections::get(const std::string& uid, std::uint64_t generation) {
    const auto kept = _connections.find(uid);
    if (kept != _connections.end() && kept->second.generation == generation) {
        kept->second.client.version();
        return kept->second;
    }
    if (kept != _connections.end())
        _connections.erase(kept);
    CameraConnection made{connectTo(_address, _options), generation, false, Clock::now()};
    return _connections.emplace(uid, std::move(made)).first->second;
}

void CameraConnections::release(const std::string& uid) {
    const auto kept = _connections.find(uid);
    if (kept == _connections.end())
        return;
    kept->second.lastUse = Clock::now();
    if (!kept->second.client.isConnected())
        _connections.erase(kept);
}

void CameraConnections::dropIdle() {
    const auto now = Clock::now();
    std::erase_if(_connections, [&](const auto& entry) { return now >= entry.second.lastUse + _idleTime; });
}

std::chrono::steady_clock::time_point CameraConnections::nextIdle() const {
    auto next = Clock::time_point::max();
    for (const auto& [uid, connection] : _connections)
        next = std::min(next, connection.lastUse + _idleTime);
    return next;
}

} // namespace CameraHubWeb
