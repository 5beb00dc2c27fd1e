#pragma once

#include "Tests/Framework/CXX/Network/TestConnection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>
#include <string_view>

/// A client's end of a connection without any library in between, which can end one direction alone. The connection is
/// there as soon as the system has queued it, whether or not the server has accepted it.
class PlainPeer {
public:
    explicit PlainPeer(quint16 port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        const int result = ::connect(_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        EXPECT_TRUE(result == 0 || errno == EINPROGRESS);
        const int on = 1;
        ::setsockopt(_descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on); // pieces arrive as pieces
    }
    ~PlainPeer() { close(); }
    PlainPeer(const PlainPeer&) = delete;
    PlainPeer& operator=(const PlainPeer&) = delete;

    /// Whether the system has taken the connection.
    bool isConnected() const {
        sockaddr_in address{};
        socklen_t size = sizeof address;
        return ::getpeername(_descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    }

    /// While the event loop turns as the server does not keep up.
    void send(std::string_view bytes) {
        while (!bytes.empty()) {
            const ssize_t count = ::send(_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count < 0 && errno != EAGAIN)
                return;
            if (count > 0)
                bytes.remove_prefix(static_cast<std::size_t>(count));
            else
                turnEventLoop();
        }
    }

    /// Ends what it sends, and goes on receiving.
    void endSending() { ::shutdown(_descriptor, SHUT_WR); }
    void endReceiving() { ::shutdown(_descriptor, SHUT_RD); }

    /// Everything received up to now, and whether the other end has ended the connection.
    const std::string& received() {
        std::array<char, 65536> bytes;
        ssize_t count = 0;
        while ((count = ::recv(_descriptor, bytes.data(), bytes.size(), 0)) > 0)
            _received.append(bytes.data(), static_cast<std::size_t>(count));
        _hasEnded = _hasEnded || count == 0 || errno != EAGAIN;
        return _received;
    }

    /// Everything received until the other end ended the connection.
    std::string receiveToTheEnd() {
        EXPECT_TRUE(turnUntil([this] {
            received();
            return _hasEnded;
        })) << "received: "
            << _received.size() << " bytes";
        return _received;
    }

    /// With the goodbye if all that came has been received, else without it.
    void close() {
        if (_descriptor >= 0)
            ::close(_descriptor);
        _descriptor = -1;
    }

    /// Without the goodbye.
    void reset() {
        const linger atOnce{1, 0};
        ::setsockopt(_descriptor, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
        close();
    }

private:
    int _descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    bool _hasEnded = false;
    std::string _received;
};
