#include "Platform/Imaging/PngEncoder.h"

#include "Platform/Imaging/ImagingError.h"
#include "Platform/Imaging/Png/PngWriter.h"

#include <cstddef>
#include <cstring>

namespace Platform::Imaging {

std::vector<std::uint8_t> encodePng(const RgbImage& image) {
    requirePixels(image, "PNG");
    requireSizeWithinLimits(image.width, image.height, "PNG");
    Png::PngWriter writer(image.width, image.height);
    const std::size_t rowSize = std::size_t{3} * image.width;
    for (std::size_t at = 0; at < image.pixels.size(); at += rowSize) {
        std::memcpy(writer.nextRow().data(), image.pixels.data() + at, rowSize);
        writer.writeRow();
    }
    return writer.takeFile();
}

} // namespace Platform::Imaging
