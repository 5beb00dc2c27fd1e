#include "Platform/Imaging/PictureRows.h"

#include <cstddef>
#include <vector>

namespace Platform::Imaging {

RgbImage readPicture(PictureRows& rows) {
    const auto [width, height] = rows.size();
    const std::size_t rowSize = std::size_t{3} * width;
    RgbImage image{width, height, std::vector<std::uint8_t>(rowSize * height)};
    for (std::size_t at = 0; at < image.pixels.size(); at += rowSize)
        rows.read(image.pixels.data() + at);
    return image;
}

} // namespace Platform::Imaging
