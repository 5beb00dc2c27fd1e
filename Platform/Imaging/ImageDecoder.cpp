#include "Platform/Imaging/ImageDecoder.h"

#include "Platform/Imaging/ImagingError.h"
#include "Platform/Imaging/JpegReader.h"
#include "Platform/Imaging/PngReader.h"

namespace Platform::Imaging {
namespace {

/// What `use` makes of the reader for the kind of file that the bytes are.
template <typename Use> auto withReader(std::span<const std::uint8_t> bytes, Use use) {
    if (PngReader::recognises(bytes)) {
        PngReader reader(bytes);
        return use(reader);
    }
    if (JpegReader::recognises(bytes)) {
        JpegReader reader(bytes);
        return use(reader);
    }
    raise(winrt::result::fail, "The data is neither a PNG nor a JPEG picture");
}

} // namespace

ImageSize decodeImageSize(std::span<const std::uint8_t> bytes) {
    return withReader(bytes, [](auto& reader) { return reader.size(); });
}

RgbImage decodeImage(std::span<const std::uint8_t> bytes) {
    return withReader(bytes, [](auto& reader) { return reader.readPixels(); });
}

} // namespace Platform::Imaging
