#include "Platform/Imaging/ImageScaler.h"

#include "Platform/Imaging/Canvas.h"
#include "Platform/Imaging/ImagingError.h"

namespace Platform::Imaging {

RgbImage scaleTo(const RgbImage& image, std::uint32_t width, std::uint32_t height) {
    requirePixels(image, "Scaling");
    requireSizeWithinLimits(image.width, image.height, "Scaling");
    requireSizeWithinLimits(width, height, "Scaling");
    if (image.width == width && image.height == height)
        return image;
    Canvas canvas(width, height);
    canvas.drawImage({0, 0, static_cast<int>(width), static_cast<int>(height)}, image);
    return canvas.toImage();
}

} // namespace Platform::Imaging
