// A picture: a file that somebody gives a simulated camera, or the frame of a camera's motion JPEG.

#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Platform/Interface/HresultError.h"
#include "Tests/Fuzz/FuzzTarget.h"
#include "Tests/Platform/Imaging/EncodedPictures.h"

#include <turbojpeg.h>

#include <span>

namespace {

using namespace Platform::Imaging;

constexpr std::uint32_t width = 24;
constexpr std::uint32_t height = 16;

/// Any bytes are a picture or raise the platform's error.
template <typename Decoding> void decode(Decoding decoding) {
    try {
        const RgbImage image = decoding();
        require(image.pixels.size() == std::size_t{3} * image.width * image.height, "the pixels fill the picture");
    } catch (const winrt::hresult_error&) {
    }
}

} // namespace

void fuzz(const std::uint8_t* data, std::size_t size) {
    const std::span bytes(data, size);
    try {
        const ImageSize claimed = decodeImageSize(bytes);
        if (std::uint64_t{claimed.width} * claimed.height > 1'000'000)
            return; // within the limits, but slow
    } catch (const winrt::hresult_error&) {
    }
    decode([&] { return decodeImage(bytes); });
    FrameLayout layout;
    layout.format = FrameFormat::Jpeg;
    layout.width = width;
    layout.height = height;
    decode([&] { return convertFrame(layout, bytes); });
}

std::vector<std::string> fuzzSeeds() {
    const RgbImage image = smoothPicture(width, height);
    const auto png = encodePng(image);
    const auto jpeg = writeJpeg(image, TJSAMP_422);
    const auto progressive = writeJpeg(image, TJSAMP_420, TJFLAG_PROGRESSIVE);
    return {{png.begin(), png.end()}, {jpeg.begin(), jpeg.end()}, {progressive.begin(), progressive.end()}};
}
