#include "Services/CameraHubWeb/Stills/JpegPicture.h"

#include "Platform/Imaging/PngReader.h"
#include "Platform/Interface/HresultError.h"
#include "Services/CameraHubWeb/Stills/PlainPng.h"

#include <libyuv/convert.h>
#include <libyuv/scale.h>
#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <type_traits>

namespace CameraHubWeb {
namespace {

using Platform::Imaging::PngReader;
using Platform::Imaging::RgbImage;

/// Brightness, and both differences of colour at half the size: what a JPEG file stores. The brightness has an even
/// number of columns and rows.
class ColourPlanes {
public:
    explicit ColourPlanes(PictureSize size)
        : _size(size), _stride(size.width + size.width % 2), _rows(size.height + size.height % 2),
          _luma(static_cast<std::size_t>(_stride) * static_cast<std::size_t>(_rows)), _samples(_luma + _luma / 2) {}

    PictureSize size() const { return _size; }
    std::array<int, 3> strides() const { return {_stride, _stride / 2, _stride / 2}; }
    std::array<std::uint8_t*, 3> planes() {
        std::uint8_t* const first = _samples.data();
        return {first, first + _luma, first + _luma + _luma / 4};
    }

    /// Gives the column and the row beyond the picture's own the samples beside them.
    void fillMargin() {
        const auto stride = static_cast<std::size_t>(_stride);
        if (_stride != _size.width)
            for (std::size_t end = stride; end <= _luma; end += stride)
                _samples[end - 1] = _samples[end - 2];
        if (_rows != _size.height)
            std::copy_n(_samples.data() + _luma - 2 * stride, stride, _samples.data() + _luma - stride);
    }

private:
    PictureSize _size;
    int _stride;
    int _rows;
    std::size_t _luma; // samples
    std::vector<std::uint8_t> _samples;
};

PictureSize sizeOf(const PngReader& reader) {
    return {static_cast<int>(reader.size().width), static_cast<int>(reader.size().height)};
}

/// What `use` makes of a reader for the bytes; whatever fails is a BrokenPicture.
template <typename Use> auto withReader(std::span<const std::uint8_t> png, Use use) {
    try {
        if (!PngReader::recognises(png))
            throw BrokenPicture("the picture is no PNG file");
        PngReader reader(png);
        return use(reader);
    } catch (const winrt::hresult_error& error) {
        std::string text; // of ASCII
        for (const char16_t character : error.message())
            text += static_cast<char>(character);
        throw BrokenPicture(text);
    } catch (const std::bad_alloc&) {
        throw BrokenPicture("there is no memory for the picture");
    }
}

void check(int result, const char* operation) {
    if (result != 0)
        throw BrokenPicture(std::string(operation) + " has failed");
}

/// From rows of R, G, B.
void convert(const std::uint8_t* pixels, std::size_t stride, ColourPlanes& picture) {
    const auto [y, u, v] = picture.planes();
    const auto [strideY, strideU, strideV] = picture.strides();
    const auto [width, height] = picture.size();
    check(libyuv::RAWToJ420(pixels, static_cast<int>(stride), y, strideY, u, strideU, v, strideV, width, height),
          "the conversion of colours");
}

/// The pixels are gone with this: they take more memory than all that follows.
ColourPlanes planesOf(std::span<const std::uint8_t> png, PngReader& reader) {
    ColourPlanes picture(sizeOf(reader));
    if (const auto plain = readPlainPng(png)) {
        convert(plain->pixels(), plain->stride(), picture);
    } else {
        const RgbImage pixels = reader.readPixels();
        convert(pixels.pixels.data(), std::size_t{3} * pixels.width, picture);
    }
    return picture;
}

/// Averaged over the areas that become one pixel.
ColourPlanes scaled(ColourPlanes& picture, PictureSize size) {
    ColourPlanes result(size);
    const auto [fromY, fromU, fromV] = picture.planes();
    const auto [strideY, strideU, strideV] = picture.strides();
    const auto [y, u, v] = result.planes();
    const auto [newStrideY, newStrideU, newStrideV] = result.strides();
    check(libyuv::I420Scale(fromY, strideY, fromU, strideU, fromV, strideV, picture.size().width, picture.size().height,
                            y, newStrideY, u, newStrideU, v, newStrideV, size.width, size.height, libyuv::kFilterBox),
          "the scaling");
    return result;
}

std::vector<std::uint8_t> encode(ColourPlanes& picture, int quality) {
    picture.fillMargin();
    const std::unique_ptr<std::remove_pointer_t<tjhandle>, int (*)(tjhandle)> encoder(tjInitCompress(), &tjDestroy);
    if (!encoder)
        throw std::bad_alloc();
    auto planes = picture.planes();
    const auto strides = picture.strides();
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const int result = tjCompressFromYUVPlanes(encoder.get(), const_cast<const unsigned char**>(planes.data()),
                                               picture.size().width, strides.data(), picture.size().height, TJSAMP_420,
                                               &bytes, &size, quality, TJFLAG_FASTDCT);
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(bytes, &tjFree);
    check(result, "the encoding as JPEG");
    return {bytes, bytes + size};
}

/// In proportion; no side is 0.
PictureSize sizeFor(PictureSize picture, int width) {
    const std::int64_t rounded =
        (std::int64_t{2} * picture.height * width + picture.width) / (std::int64_t{2} * picture.width);
    return {width, static_cast<int>(std::max<std::int64_t>(rounded, 1))};
}

} // namespace

PictureSize pngSize(std::span<const std::uint8_t> png) { return withReader(png, sizeOf); }

std::vector<std::uint8_t> encodeJpeg(std::span<const std::uint8_t> png, std::optional<int> width, int quality) {
    return withReader(png, [png, width, quality](PngReader& reader) {
        ColourPlanes picture = planesOf(png, reader);
        if (width && *width < picture.size().width)
            picture = scaled(picture, sizeFor(picture.size(), *width));
        return encode(picture, quality);
    });
}

} // namespace CameraHubWeb
