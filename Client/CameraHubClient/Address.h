#pragma once

#include <cstdint>
#include <string>

namespace CameraHub {

/// Where a hub is.
struct Address {
    /// A name, or an IPv4 or IPv6 address without brackets: letters, digits and ".-_:%".
    std::string host = "localhost";
    /// Where it takes messages; not 0. The hub's own ports are fixed: others are for a forwarded or a stand-in hub.
    std::uint16_t messagePort = 3141;
    /// Where it gives images; not 0.
    std::uint16_t imagePort = 3142;
};

} // namespace CameraHub
