#include "Tools/CameraHub/Picture/RgbPicture.h"

#include <png.h>

#include <memory>

namespace CommandLine {

RgbPicture decodePng(std::span<const std::uint8_t> png) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    const std::unique_ptr<png_image, decltype(&png_image_free)> guard(&image, &png_image_free);
    if (!png_image_begin_read_from_memory(&image, png.data(), png.size()))
        throw BrokenPicture(image.message);
    image.format = PNG_FORMAT_RGB;
    RgbPicture picture;
    picture.width = static_cast<int>(image.width);
    picture.height = static_cast<int>(image.height);
    picture.samples.resize(std::size_t{3} * image.width * image.height);
    if (!png_image_finish_read(&image, nullptr, picture.samples.data(), 0, nullptr))
        throw BrokenPicture(image.message);
    return picture;
}

} // namespace CommandLine
