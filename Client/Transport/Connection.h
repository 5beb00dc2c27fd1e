#pragma once

#include "Client/Transport/Deadline.h"
#include "Client/Transport/Descriptor.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace CameraHub {

/// A TCP connection. All its functions wait until a deadline and throw Cancelled; one thread at a time.
class Connection {
public:
    /// Tries the addresses of the host one after the other, each for its share of the time that is left. Throws
    /// ConnectionFailed, TimedOut.
    Connection(const std::string& host, std::uint16_t port, const Deadline& deadline);

    /// All of it. Throws ConnectionEnded, TimedOut.
    void send(std::string_view bytes, const Deadline& deadline);

    /// Puts what has come behind the bytes, as soon as there is something, at most 64 KiB. Throws ConnectionEnded, also
    /// if the other side has ended the connection in order; TimedOut.
    void receive(std::string& bytes, const Deadline& deadline);

private:
    void waitFor(short events, const Deadline& deadline) const;

    std::string _name;
    Descriptor _socket{-1};
};

} // namespace CameraHub
