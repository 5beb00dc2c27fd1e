#pragma once

#include "Client/Transport/Connection.h"

#include <string>
#include <string_view>
#include <utility>

namespace CameraHub {

/// A connection for messages, each of which ends with a NUL.
class MessageConnection {
public:
    explicit MessageConnection(Connection connection) : _connection(std::move(connection)) {}

    /// Sends a message with its NUL; the reply, without. Throws what Connection does, and ProtocolError for a reply
    /// that is longer than any hub's. After that the connection is good for nothing.
    std::string exchange(std::string_view message, const Deadline& deadline);

private:
    Connection _connection;
    /// What has come behind the latest reply: nothing, from a hub. It then spoils the next one.
    std::string _received;
};

} // namespace CameraHub
