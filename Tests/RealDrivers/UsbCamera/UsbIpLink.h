#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace UsbCamera {

/// A USB request block that the kernel has handed over.
struct Request {
    std::uint32_t number = 0;
    bool isUnlink = false; // takes back the request `target`; nothing else of it counts then
    std::uint32_t target = 0;
    std::uint32_t endpoint = 0; // without the direction
    bool isIn = false;
    std::uint32_t length = 0; // of the kernel's buffer, bytes
    std::array<std::uint8_t, 8> setup{};
    std::vector<std::uint8_t> data; // of an OUT request
};

/// The device's end of a connection to the kernel's USB/IP host controller, in the kernel's documented protocol
/// (usbip_protocol). Closing it is pulling the plug. One thread.
class UsbIpLink {
public:
    /// Plugs a high-speed device into that port of the first controller; waits for a port that is still being
    /// emptied. Throws std::system_error.
    explicit UsbIpLink(unsigned port);
    ~UsbIpLink();
    UsbIpLink(const UsbIpLink&) = delete;
    UsbIpLink& operator=(const UsbIpLink&) = delete;

    int socket() const { return _socket; }

    /// The next request, waiting for it; nothing when the kernel has closed the connection.
    std::optional<Request> receive();

    /// Ends an IN request with `data`, or an OUT request all of whose bytes were taken.
    void succeed(const Request& request, std::span<const std::uint8_t> data = {});
    /// Ends a request with a status, a negative error number as in the kernel.
    void fail(const Request& request, int status);
    /// Ends an unlink request: whether its target was still waiting.
    void unlinked(const Request& request, bool wasWaiting);

private:
    void reply(std::uint32_t command, const Request& request, int status, std::uint32_t length,
               std::span<const std::uint8_t> data);

    int _socket = -1;
};

} // namespace UsbCamera
