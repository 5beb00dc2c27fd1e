#pragma once

#include "Tools/CameraHub/Picture/RgbPicture.h"

#include <png.h>

#include <cstdint>
#include <stdexcept>
#include <vector>

namespace CommandLine {

inline std::vector<std::uint8_t> pngOf(const RgbPicture& picture) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::vector<std::uint8_t> file(size);
    if (!png_image_write_to_memory(&image, file.data(), &size, 0, picture.samples.data(), 0, nullptr))
        throw std::runtime_error(image.message);
    file.resize(size);
    return file;
}

inline RgbPicture uniform(int width, int height, std::uint8_t sample) {
    return {width, height, std::vector<std::uint8_t>(std::size_t{3} * width * height, sample)};
}

} // namespace CommandLine
