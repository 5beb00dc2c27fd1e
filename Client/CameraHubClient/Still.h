#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CameraHub {

/// A still that the hub has taken and keeps, until anybody takes the next one.
struct Capture {
    /// The exposure in force, rounded by the hub to a power of two of a second. None: it could not be set or read back,
    /// while the still was taken all the same.
    std::optional<std::chrono::microseconds> exposure;
    /// What CameraHubClient::fetch takes: 36 characters, the text of a GUID.
    std::string imageId;
};

/// A still with its picture.
struct Still {
    /// What was taken, the second time if there were two.
    Capture capture;
    /// A PNG file, 8 bits a colour.
    std::vector<std::uint8_t> png;
    /// Whether the image of a first capture was gone before it could be fetched, so that there was a second one.
    bool wasTakenTwice = false;
};

} // namespace CameraHub
