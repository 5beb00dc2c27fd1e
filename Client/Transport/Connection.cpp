#include "Client/Transport/Connection.h"

#include <CameraHubClient/Errors.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

namespace CameraHub {

namespace {

using Addresses = std::unique_ptr<addrinfo, decltype(&freeaddrinfo)>;

std::string textOf(int error) { return std::generic_category().message(error); }

Addresses lookUp(const std::string& name, const std::string& host, std::uint16_t port) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_NUMERICSERV;
    addrinfo* found = nullptr;
    const int failure = getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &found);
    const int error = errno;
    if (failure != 0)
        throw ConnectionFailed("cannot connect to " + name + ": " +
                               (failure == EAI_SYSTEM ? textOf(error) : std::string(gai_strerror(failure))));
    return {found, freeaddrinfo};
}

std::ptrdiff_t countOf(const addrinfo* address) {
    std::ptrdiff_t count = 0;
    for (; address != nullptr; address = address->ai_next)
        ++count;
    return count;
}

/// The errno of the attempt; 0 if it is connected.
int connectTo(int descriptor, const addrinfo& address, const Deadline& deadline) {
    if (connect(descriptor, address.ai_addr, address.ai_addrlen) == 0)
        return 0;
    if (errno != EINPROGRESS && errno != EINTR) // both go on without us
        return errno;
    if (!isReadyBefore(deadline, descriptor, POLLOUT))
        return ETIMEDOUT;
    int error = 0;
    socklen_t size = sizeof error;
    return getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

} // namespace

Connection::Connection(const std::string& host, std::uint16_t port, const Deadline& deadline)
    : _name(host + ", port " + std::to_string(port)) {
    throwIfCancelled(deadline.cancellation);
    const Addresses addresses = lookUp(_name, host, port);
    std::ptrdiff_t left = countOf(addresses.get());
    int error = 0;
    for (const addrinfo* address = addresses.get(); address != nullptr; address = address->ai_next, --left) {
        const auto now = std::chrono::steady_clock::now();
        Deadline share = deadline;
        share.end = now + (deadline.end - now) / left;
        Descriptor descriptor(socket(address->ai_family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        error = descriptor.get() < 0 ? errno : connectTo(descriptor.get(), *address, share);
        if (error == 0) {
            _socket = std::move(descriptor);
            return;
        }
    }
    if (std::chrono::steady_clock::now() >= deadline.end)
        throw TimedOut("no connection to " + _name + " within " + std::to_string(deadline.time.count()) + " ms");
    throw ConnectionFailed("cannot connect to " + _name + ": " + textOf(error));
}

void Connection::waitFor(short events, const Deadline& deadline) const {
    if (!isReadyBefore(deadline, _socket.get(), events))
        throw TimedOut(_name + ": no complete reply within " + std::to_string(deadline.time.count()) + " ms");
}

void Connection::send(std::string_view bytes, const Deadline& deadline) {
    while (!bytes.empty()) {
        waitFor(POLLOUT, deadline);
        const ssize_t sent = ::send(_socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(sent));
        else if (errno != EAGAIN && errno != EINTR)
            throw ConnectionEnded(_name + ": the hub has ended the connection: " + textOf(errno));
    }
}

void Connection::receive(std::string& bytes, const Deadline& deadline) {
    std::array<char, 65536> part;
    while (true) {
        waitFor(POLLIN, deadline);
        const ssize_t received = recv(_socket.get(), part.data(), part.size(), 0);
        if (received > 0) {
            bytes.append(part.data(), static_cast<std::size_t>(received));
            return;
        }
        if (received == 0)
            throw ConnectionEnded(_name + ": the hub has ended the connection without a complete reply");
        if (errno != EAGAIN && errno != EINTR)
            throw ConnectionEnded(_name + ": the hub has ended the connection: " + textOf(errno));
    }
}

} // namespace CameraHub
