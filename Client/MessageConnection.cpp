#include "Client/MessageConnection.h"

#include <CameraHubClient/Errors.h>

namespace CameraHub {

namespace {

/// Far beyond the list of all cameras that a machine can have.
constexpr std::size_t longestReply = 16 * 1024 * 1024;

} // namespace

std::string MessageConnection::exchange(std::string_view message, const Deadline& deadline) {
    _connection.send(message, deadline);
    std::size_t end = _received.find('\0');
    while (end == std::string::npos) {
        const std::size_t before = _received.size();
        if (before > longestReply)
            throw ProtocolError("what answers is no hub: a reply does not end");
        _connection.receive(_received, deadline);
        end = _received.find('\0', before);
    }
    const std::string reply = _received.substr(0, end);
    _received.erase(0, end + 1);
    return reply;
}

} // namespace CameraHub
