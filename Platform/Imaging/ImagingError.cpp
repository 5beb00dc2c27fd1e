#include "Platform/Imaging/ImagingError.h"

#include "Platform/Imaging/ImageSize.h"

#include <string>

namespace Platform::Imaging {
namespace {

std::string sizeText(std::uint64_t width, std::uint64_t height) {
    return std::to_string(width) + "x" + std::to_string(height);
}

} // namespace

void raise(winrt::hresult code, std::string_view text) {
    throw winrt::hresult_error(code, std::u16string(text.begin(), text.end()));
}

void requirePixels(const RgbImage& image, std::string_view operation) {
    const std::uint64_t size = std::uint64_t{3} * image.width * image.height;
    if (size == 0 || image.pixels.size() != size)
        raise(winrt::result::invalidArgument, std::string(operation) + ": " + std::to_string(image.pixels.size()) +
                                                  " bytes are no picture of " + sizeText(image.width, image.height));
}

void requireSizeWithinLimits(std::uint64_t width, std::uint64_t height, std::string_view operation) {
    if (width == 0 || height == 0 || width > maxImageSide || height > maxImageSide || width * height > maxImagePixels)
        raise(winrt::result::invalidArgument,
              std::string(operation) + ": a picture of " + sizeText(width, height) + " is not supported");
}

} // namespace Platform::Imaging
