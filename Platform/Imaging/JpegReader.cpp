#include "Platform/Imaging/JpegReader.h"

#include "Platform/Imaging/ImagingError.h"

#include <turbojpeg.h>

#include <string>
#include <vector>

namespace Platform::Imaging {

void JpegReader::Deleter::operator()(void* decompressor) const { tjDestroy(decompressor); }

bool JpegReader::recognises(std::span<const std::uint8_t> bytes) {
    return bytes.size() >= 3 && bytes[0] == 0xFF && bytes[1] == 0xD8 && bytes[2] == 0xFF;
}

JpegReader::JpegReader(std::span<const std::uint8_t> bytes) : _bytes(bytes), _decompressor(tjInitDecompress()) {
    if (!_decompressor)
        raise(winrt::result::outOfMemory, "JPEG: out of memory");
    int width = 0;
    int height = 0;
    int subsampling = 0;
    int colourSpace = 0;
    if (tjDecompressHeader3(_decompressor.get(), _bytes.data(), _bytes.size(), &width, &height, &subsampling,
                            &colourSpace) != 0)
        raiseError();
    // So the library reports files that hold tables alone, and those that end before their size is told.
    if (width == 0 || height == 0)
        raise(winrt::result::fail, "JPEG: the data holds no picture");
    if (colourSpace == TJCS_CMYK || colourSpace == TJCS_YCCK)
        raise(winrt::result::fail, "JPEG: pictures in CMYK are not supported");
    requireSizeWithinLimits(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height), "JPEG");
    _size = {static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height)};
}

RgbImage JpegReader::readPixels() {
    RgbImage image{_size.width, _size.height, std::vector<std::uint8_t>(std::size_t{3} * _size.width * _size.height)};
    // A warning means that pixels are missing or wrong. Scans are limited because a small progressive
    // file can ask for hours of decoding.
    constexpr int flags = TJFLAG_ACCURATEDCT | TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS;
    if (tjDecompress2(_decompressor.get(), _bytes.data(), _bytes.size(), image.pixels.data(),
                      static_cast<int>(_size.width), 0, static_cast<int>(_size.height), TJPF_RGB, flags) != 0)
        raiseError();
    return image;
}

void JpegReader::raiseError() const {
    raise(winrt::result::fail, "JPEG: " + std::string(tjGetErrorStr2(_decompressor.get())));
}

} // namespace Platform::Imaging
