#include "Tests/RealDrivers/UsbCamera/UsbIpLink.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <string>
#include <system_error>
#include <thread>

namespace UsbCamera {
namespace {

constexpr const char* attachFile = "/sys/devices/platform/vhci_hcd.0/attach";
constexpr int highSpeed = 3;               // usb_device_speed of the kernel
constexpr unsigned deviceNumber = 0x10002; // bus 1, device 2: of no meaning to the kernel

constexpr std::uint32_t commandSubmit = 1;
constexpr std::uint32_t commandUnlink = 2;
constexpr std::uint32_t replySubmit = 3;
constexpr std::uint32_t replyUnlink = 4;
constexpr std::uint32_t directionIn = 1;

/// The twelve numbers, in network order, that each message begins with.
using Header = std::array<std::uint32_t, 12>;

[[noreturn]] void raise(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

bool receiveAll(int socket, void* buffer, std::size_t size) {
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    while (size > 0) {
        const ssize_t count = recv(socket, bytes, size, 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

/// What cannot be sent any more goes to a controller that has let go: the next receive() tells.
void sendAll(int socket, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
}

void attach(unsigned port, int socket) {
    const std::string text = std::to_string(port) + " " + std::to_string(socket) + " " + std::to_string(deviceNumber) +
                             " " + std::to_string(highSpeed);
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    const int file = open(attachFile, O_WRONLY | O_CLOEXEC);
    if (file < 0)
        raise(attachFile);
    while (write(file, text.data(), text.size()) < 0) {
        if ((errno != EBUSY && errno != EINVAL) || std::chrono::steady_clock::now() > end)
            raise(attachFile);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    close(file);
}

} // namespace

UsbIpLink::UsbIpLink(unsigned port) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        raise("socketpair");
    _socket = ends[0];
    attach(port, ends[1]);
    close(ends[1]); // the kernel holds it now
}

UsbIpLink::~UsbIpLink() {
    shutdown(_socket, SHUT_RDWR);
    close(_socket);
}

std::optional<Request> UsbIpLink::receive() {
    Header header{};
    if (!receiveAll(_socket, header.data(), sizeof(header)))
        return std::nullopt;
    Request request;
    request.number = ntohl(header[1]);
    if (ntohl(header[0]) == commandUnlink) {
        request.isUnlink = true;
        request.target = ntohl(header[5]);
        return request;
    }
    if (ntohl(header[0]) != commandSubmit)
        return std::nullopt;
    request.isIn = ntohl(header[3]) == directionIn;
    request.endpoint = ntohl(header[4]);
    request.length = ntohl(header[6]);
    std::memcpy(request.setup.data(), &header[10], request.setup.size());
    if (!request.isIn) {
        request.data.resize(request.length);
        if (!receiveAll(_socket, request.data.data(), request.data.size()))
            return std::nullopt;
    }
    return request;
}

void UsbIpLink::succeed(const Request& request, std::span<const std::uint8_t> data) {
    reply(replySubmit, request, 0, request.isIn ? static_cast<std::uint32_t>(data.size()) : request.length, data);
}

void UsbIpLink::fail(const Request& request, int status) { reply(replySubmit, request, status, 0, {}); }

void UsbIpLink::unlinked(const Request& request, bool wasWaiting) {
    reply(replyUnlink, request, wasWaiting ? -ECONNRESET : 0, 0, {});
}

void UsbIpLink::reply(std::uint32_t command, const Request& request, int status, std::uint32_t length,
                      std::span<const std::uint8_t> data) {
    Header header{};
    header[0] = htonl(command);
    header[1] = htonl(request.number);
    header[5] = htonl(static_cast<std::uint32_t>(status));
    header[6] = htonl(length);
    std::array<std::uint8_t, sizeof(Header)> bytes{};
    std::memcpy(bytes.data(), header.data(), bytes.size());
    sendAll(_socket, bytes);
    sendAll(_socket, data);
}

} // namespace UsbCamera
