#pragma once

#include "Platform/Imaging/FrameFormat.h"
#include "Platform/Imaging/RgbImage.h"

#include <cstdint>
#include <span>
#include <vector>

namespace Platform::Imaging {

using Bytes = std::vector<std::uint8_t>;

/// A PNG file to be written by libpng itself; the names of colour types are those of <png.h>.
struct PngRecipe {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    int bitDepth = 8;
    int colourType = 2;
    bool interlaced = false;
    /// Rows as the file has them, packed, 16-bit samples high byte first.
    Bytes rows;
    /// R, G, B for each entry.
    Bytes palette = {};
    /// Alpha of the first palette entries.
    Bytes paletteAlpha = {};
    /// For a gAMA chunk; 0 for none.
    double gamma = 0;
};
Bytes writePng(const PngRecipe& recipe);

/// A JPEG file from RGB pixels; the flags and sub-samplings of <turbojpeg.h>.
Bytes writeJpeg(const RgbImage& image, int subsampling, int flags = 0);
/// One from four samples a pixel.
Bytes writeCmykJpeg(std::uint32_t width, std::uint32_t height, const Bytes& pixels);

/// The whole picture of a camera's frame; raises what opening it and reading its rows do.
RgbImage convertFrame(const FrameLayout& layout, std::span<const std::uint8_t> bytes);

/// A smooth picture, so that JPEG keeps it nearly as it is.
RgbImage smoothPicture(std::uint32_t width, std::uint32_t height);
/// One that cannot be compressed; the same for the same size.
RgbImage noisyPicture(std::uint32_t width, std::uint32_t height);

} // namespace Platform::Imaging
