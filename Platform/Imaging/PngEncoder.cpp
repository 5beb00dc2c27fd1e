#include "Platform/Imaging/PngEncoder.h"

#include "Platform/Imaging/ImagingError.h"
#include "Platform/Imaging/PngGuard.h"

#include <zlib.h>

#include <string>

namespace Platform::Imaging {
namespace {

// Chosen by measurement on 12 megapixels with a sensor's noise: runs of differences to the row above take a
// thirteenth of the time of libpng's defaults, at files 1.4 % larger; without noise a quarter, at 17 %.
constexpr int filter = PNG_FILTER_UP;
constexpr int strategy = Z_RLE;
constexpr int compressionLevel = 1;

class PngWriter {
public:
    explicit PngWriter(std::vector<std::uint8_t>& bytes) : _bytes(bytes) {
        _png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &_message, &PngMessage::onError, &PngMessage::onWarning);
        _info = _png ? png_create_info_struct(_png) : nullptr;
        if (!_info) {
            png_destroy_write_struct(&_png, nullptr);
            raise(winrt::result::outOfMemory, "PNG: out of memory");
        }
    }
    ~PngWriter() { png_destroy_write_struct(&_png, &_info); }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;

    void write(const RgbImage& image) {
        if (!runGuarded(_png, [this, &image] { writeFile(image); }))
            raise(winrt::result::fail, "PNG: " + std::string(_message.text()));
    }

private:
    static void append(png_structp png, png_bytep bytes, std::size_t count) {
        auto& all = *static_cast<std::vector<std::uint8_t>*>(png_get_io_ptr(png));
        // The room was reserved before: an exception must not pass through libpng.
        if (count > all.capacity() - all.size())
            png_error(png, "the file is larger than foreseen");
        all.insert(all.end(), bytes, bytes + count);
    }

    void writeFile(const RgbImage& image) const {
        png_set_write_fn(_png, &_bytes, &append, nullptr);
        png_set_compression_level(_png, compressionLevel);
        png_set_compression_strategy(_png, strategy);
        png_set_filter(_png, PNG_FILTER_TYPE_BASE, filter);
        png_set_IHDR(_png, _info, image.width, image.height, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        // No gAMA, sRGB or other ancillary chunk: samples without one are taken as sRGB, which they are.
        png_write_info(_png, _info);
        const std::uint8_t* row = image.pixels.data();
        for (std::uint32_t y = 0; y < image.height; ++y, row += std::size_t{3} * image.width)
            png_write_row(_png, row);
        png_write_end(_png, _info);
    }

    std::vector<std::uint8_t>& _bytes;
    PngMessage _message;
    png_structp _png = nullptr;
    png_infop _info = nullptr;
};

/// More bytes than the file of a picture ever has: samples that cannot be compressed grow by less than 1 %.
std::size_t fileSizeBound(const RgbImage& image) {
    constexpr std::size_t fixedParts = 1000;
    const std::size_t filtered = image.pixels.size() + image.height;
    return filtered + filtered / 8 + fixedParts;
}

} // namespace

std::vector<std::uint8_t> encodePng(const RgbImage& image) {
    requirePixels(image, "PNG");
    std::vector<std::uint8_t> bytes;
    // Pages of the reserve that are never written to cost no memory.
    bytes.reserve(fileSizeBound(image));
    PngWriter(bytes).write(image);
    return bytes;
}

} // namespace Platform::Imaging
