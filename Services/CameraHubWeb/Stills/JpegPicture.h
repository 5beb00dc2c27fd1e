#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <vector>

namespace CameraHubWeb {

/// In pixels.
struct PictureSize {
    int width = 0;
    int height = 0;
};

/// The bytes are no PNG file that can be read, or memory for the picture is lacking; what() says why.
class BrokenPicture : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Out of the head of a PNG file; throws BrokenPicture.
PictureSize pngSize(std::span<const std::uint8_t> png);

/// The picture of a PNG file as a baseline JPEG file: at most `width` pixels wide, if that is given, never larger than
/// it is, its sides in proportion; `quality` from 1 to 100. Throws BrokenPicture. Any thread.
std::vector<std::uint8_t> encodeJpeg(std::span<const std::uint8_t> png, std::optional<int> width, int quality);

} // namespace CameraHubWeb
