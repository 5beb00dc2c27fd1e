#include "Tests/Platform/Imaging/EncodedPictures.h"

#include "Platform/Imaging/FrameConverter.h"

#include <png.h>
#include <turbojpeg.h>

#include <memory>
#include <random>
#include <stdexcept>

namespace Platform::Imaging {
namespace {

void append(png_structp png, png_bytep bytes, std::size_t count) {
    auto& file = *static_cast<Bytes*>(png_get_io_ptr(png));
    file.insert(file.end(), bytes, bytes + count);
}

[[noreturn]] void failTest(png_structp, png_const_charp text) { throw std::runtime_error(text); }

std::size_t bytesPerRow(const PngRecipe& recipe) { return recipe.rows.size() / recipe.height; }

Bytes compress(const Bytes& pixels, std::uint32_t width, std::uint32_t height, int format, int subsampling, int flags) {
    const std::unique_ptr<void, int (*)(tjhandle)> compressor(tjInitCompress(), &tjDestroy);
    unsigned char* file = nullptr;
    unsigned long size = 0;
    constexpr int quality = 92;
    if (tjCompress2(compressor.get(), pixels.data(), static_cast<int>(width), 0, static_cast<int>(height), format,
                    &file, &size, subsampling, quality, flags) != 0)
        throw std::runtime_error(tjGetErrorStr2(compressor.get()));
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(file, &tjFree);
    return Bytes(file, file + size);
}

} // namespace

Bytes writePng(const PngRecipe& recipe) {
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, &failTest, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, &append, nullptr);
    png_set_IHDR(png, info, recipe.width, recipe.height, recipe.bitDepth, recipe.colourType,
                 recipe.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    std::vector<png_color> palette;
    for (std::size_t i = 0; i + 2 < recipe.palette.size(); i += 3)
        palette.push_back({recipe.palette[i], recipe.palette[i + 1], recipe.palette[i + 2]});
    if (!palette.empty())
        png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
    if (!recipe.paletteAlpha.empty())
        png_set_tRNS(png, info, recipe.paletteAlpha.data(), static_cast<int>(recipe.paletteAlpha.size()), nullptr);
    if (recipe.gamma != 0)
        png_set_gAMA(png, info, recipe.gamma);
    std::vector<png_bytep> rows;
    for (std::uint32_t y = 0; y < recipe.height; ++y)
        rows.push_back(const_cast<png_bytep>(recipe.rows.data() + y * bytesPerRow(recipe)));
    png_set_rows(png, info, rows.data());
    png_write_png(png, info, PNG_TRANSFORM_IDENTITY, nullptr);
    png_destroy_write_struct(&png, &info);
    return file;
}

Bytes writeJpeg(const RgbImage& image, int subsampling, int flags) {
    return compress(image.pixels, image.width, image.height, TJPF_RGB, subsampling, flags);
}

Bytes writeCmykJpeg(std::uint32_t width, std::uint32_t height, const Bytes& pixels) {
    return compress(pixels, width, height, TJPF_CMYK, TJSAMP_444, 0);
}

RgbImage convertFrame(const FrameLayout& layout, std::span<const std::uint8_t> bytes) {
    return readPicture(*openFrame(layout, bytes));
}

RgbImage smoothPicture(std::uint32_t width, std::uint32_t height) {
    RgbImage image{width, height, {}};
    for (std::uint32_t y = 0; y < height; ++y)
        for (std::uint32_t x = 0; x < width; ++x)
            for (const std::uint32_t sample : {40 + 160 * x / width, 200 - 120 * y / height, 60 + 100 * x / width})
                image.pixels.push_back(static_cast<std::uint8_t>(sample));
    return image;
}

RgbImage noisyPicture(std::uint32_t width, std::uint32_t height) {
    RgbImage image{width, height, Bytes(std::size_t{3} * width * height)};
    std::minstd_rand random(width * 31 + height);
    for (std::uint8_t& sample : image.pixels)
        sample = static_cast<std::uint8_t>(random() >> 8);
    return image;
}

} // namespace Platform::Imaging
