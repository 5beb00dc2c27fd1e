#include "Tests/Client/ListeningSocket.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iomanip>
#include <sstream>

namespace {

struct LoopbackAddress {
    LoopbackAddress(const std::string& host, std::uint16_t port) {
        if (host == "::1") {
            auto& ipv6 = reinterpret_cast<sockaddr_in6&>(storage);
            ipv6.sin6_family = AF_INET6;
            ipv6.sin6_addr = in6addr_loopback;
            size = sizeof ipv6;
        } else {
            auto& ipv4 = reinterpret_cast<sockaddr_in&>(storage);
            ipv4.sin_family = AF_INET;
            inet_pton(AF_INET, host.c_str(), &ipv4.sin_addr);
            size = sizeof ipv4;
        }
        this->port() = htons(port);
    }

    sockaddr* get() { return reinterpret_cast<sockaddr*>(&storage); }
    /// At the same place in both kinds.
    in_port_t& port() { return reinterpret_cast<sockaddr_in&>(storage).sin_port; }

    sockaddr_storage storage{};
    socklen_t size;
};

int socketFor(LoopbackAddress& address, int flags) {
    return socket(address.get()->sa_family, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
}

} // namespace

ListeningSocket::ListeningSocket(const std::string& host, int backlog, std::uint16_t port) : _host(host) {
    LoopbackAddress address(host, port);
    _descriptor = socketFor(address, 0);
    const int yes = 1; // connections that have just ended do not block a port
    if (port != 0)
        setsockopt(_descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (bind(_descriptor, address.get(), address.size) != 0 || listen(_descriptor, backlog) != 0 ||
        getsockname(_descriptor, address.get(), &address.size) != 0)
        ADD_FAILURE() << "cannot listen at " << host << ": " << std::strerror(errno);
    _port = ntohs(address.port());
}

ListeningSocket::~ListeningSocket() {
    for (const int filler : _fillers)
        close(filler);
    close(_taken);
    close(_descriptor);
}

int ListeningSocket::bytesThatWait() {
    if (_taken < 0)
        _taken = accept4(_descriptor, nullptr, nullptr, SOCK_CLOEXEC);
    int count = 0;
    ioctl(_taken, FIONREAD, &count);
    return count;
}

void ListeningSocket::fill() {
    while (halfMadeConnections() == 0) {
        LoopbackAddress address(_host, _port);
        _fillers.push_back(socketFor(address, SOCK_NONBLOCK));
        (void)connect(_fillers.back(), address.get(), address.size);
    }
    _halfMadeByFill = halfMadeConnections();
}

int ListeningSocket::halfMadeConnections() const {
    // "sl: local:port remote:port state ...", addresses and ports as hexadecimal digits, 02 for a connection begun.
    std::ostringstream end;
    end << ":" << std::uppercase << std::hex << std::setw(4) << std::setfill('0') << _port;
    std::ifstream table("/proc/self/net/tcp");
    int count = 0;
    for (std::string line; std::getline(table, line);) {
        std::istringstream words(line);
        std::string number, local, remote, state;
        words >> number >> local >> remote >> state;
        count += remote.ends_with(end.str()) && state == "02" ? 1 : 0;
    }
    return count - _halfMadeByFill;
}

bool hasIpv6Loopback() {
    LoopbackAddress address("::1", 0);
    const int descriptor = socketFor(address, 0);
    const bool isBound = descriptor >= 0 && bind(descriptor, address.get(), address.size) == 0;
    close(descriptor);
    return isBound;
}
