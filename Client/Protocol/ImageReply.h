#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace CameraHub {

/// Far beyond the head of any reply of the hub.
constexpr std::size_t longestHead = 16 * 1024;

/// Beyond the largest picture that the hub takes, 100 million pixels of three bytes each.
constexpr std::size_t longestImage = 512 * 1024 * 1024;

/// How many bytes of an image follow the head of a reply, which includes its empty line. Throws ImageGone where the
/// hub has none; ProtocolError for what is no reply of a hub, and above longestImage.
std::size_t imageSizeIn(std::string_view head);

/// Throws ProtocolError for what does not begin like a PNG file.
std::vector<std::uint8_t> pngFrom(std::string_view bytes);

} // namespace CameraHub
