#include "Platform/Imaging/BitmapCodecs.h"

#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Imaging/ImagingError.h"
#include "Platform/Imaging/PngEncoder.h"

#include <libyuv/convert_argb.h>
#include <libyuv/convert_from_argb.h>
#include <libyuv/planar_functions.h>

#include <string>
#include <utility>
#include <vector>

// libyuv names pixels as words of a little-endian machine: its ARGB is Bgra8 in memory, its RAW is R, G, B.

namespace Platform::Imaging {
namespace {

/// An operation that has ended as `work` did.
template <typename Result, typename Work> IAsyncOperation<Result> runNow(const Work& work) {
    AsyncOperationSource<Result> source;
    source.endWith(work);
    return source.operation();
}

int strideOf(const SoftwareBitmapData& bitmap) { return static_cast<int>(bitmap.PixelWidth * 4); }
int widthOf(const SoftwareBitmapData& bitmap) { return static_cast<int>(bitmap.PixelWidth); }
int heightOf(const SoftwareBitmapData& bitmap) { return static_cast<int>(bitmap.PixelHeight); }

bool isSupported(BitmapPixelFormat format) {
    return format == BitmapPixelFormat::Rgba8 || format == BitmapPixelFormat::Bgra8;
}

/// Raises invalidArgument unless there is a bitmap that we can read.
void requireBitmap(const SoftwareBitmap& bitmap, const std::string& operation) {
    if (!bitmap)
        raise(winrt::result::invalidArgument, operation + ": there is no bitmap");
    if (!isSupported(bitmap->Format))
        raise(winrt::result::invalidArgument,
              operation + ": pixel format " + std::to_string(static_cast<int>(bitmap->Format)) + " is not supported");
    requireSizeWithinLimits(bitmap->PixelWidth, bitmap->PixelHeight, operation);
    if (bitmap->Pixels.size() != std::size_t{4} * bitmap->PixelWidth * bitmap->PixelHeight)
        raise(winrt::result::invalidArgument, operation + ": the pixels do not fill the bitmap");
}

std::vector<std::uint8_t> readWhole(IRandomAccessStream& stream) {
    std::vector<std::uint8_t> bytes(stream.Size());
    stream.Seek(0);
    bytes.resize(stream.Read(bytes));
    return bytes;
}

SoftwareBitmap toBgra8(const RgbImage& image) {
    auto bitmap = std::make_shared<SoftwareBitmapData>();
    bitmap->Format = BitmapPixelFormat::Bgra8;
    bitmap->PixelWidth = image.width;
    bitmap->PixelHeight = image.height;
    bitmap->Pixels.resize(std::size_t{4} * image.width * image.height);
    libyuv::RAWToARGB(image.pixels.data(), widthOf(*bitmap) * 3, bitmap->Pixels.data(), strideOf(*bitmap),
                      widthOf(*bitmap), heightOf(*bitmap));
    return bitmap;
}

RgbImage toRgb(const SoftwareBitmap& bitmap) {
    const SoftwareBitmap source = convertSoftwareBitmap(bitmap, BitmapPixelFormat::Bgra8);
    RgbImage image{source->PixelWidth, source->PixelHeight,
                   std::vector<std::uint8_t>(std::size_t{3} * source->PixelWidth * source->PixelHeight)};
    libyuv::ARGBToRAW(source->Pixels.data(), strideOf(*source), image.pixels.data(), widthOf(*source) * 3,
                      widthOf(*source), heightOf(*source));
    return image;
}

class Decoder final : public IBitmapDecoder {
public:
    explicit Decoder(std::vector<std::uint8_t> bytes) : _bytes(std::move(bytes)) { decodeImageSize(_bytes); }

    IAsyncOperation<SoftwareBitmap> GetSoftwareBitmapAsync() override {
        return runNow<SoftwareBitmap>([this] { return toBgra8(decodeImage(_bytes)); });
    }

private:
    const std::vector<std::uint8_t> _bytes;
};

class Encoder final : public IBitmapEncoder {
public:
    explicit Encoder(RandomAccessStream stream) : _stream(std::move(stream)) {}

    void SetSoftwareBitmap(const SoftwareBitmap& bitmap) override {
        requireBitmap(bitmap, "SetSoftwareBitmap");
        _bitmap = bitmap;
    }

    IAsyncAction FlushAsync() override {
        return runNow<void>([this] {
            requireBitmap(_bitmap, "FlushAsync");
            _stream->WriteOwned(encodePng(toRgb(_bitmap)));
        });
    }

private:
    const RandomAccessStream _stream;
    SoftwareBitmap _bitmap;
};

} // namespace

IAsyncOperation<BitmapDecoder> createBitmapDecoderAsync(const RandomAccessStream& stream) {
    return runNow<BitmapDecoder>([&stream] {
        if (!stream)
            raise(winrt::result::invalidArgument, "BitmapDecoder: there is no stream");
        return std::make_shared<Decoder>(readWhole(*stream));
    });
}

IAsyncOperation<BitmapEncoder> createBitmapEncoderAsync(const Guid& encoderId, const RandomAccessStream& stream) {
    return runNow<BitmapEncoder>([&] {
        if (!stream)
            raise(winrt::result::invalidArgument, "BitmapEncoder: there is no stream");
        if (encoderId != PngEncoderId)
            raise(winrt::result::invalidArgument, "BitmapEncoder: there is no encoder " + guidToText(encoderId));
        return std::make_shared<Encoder>(stream);
    });
}

SoftwareBitmap convertSoftwareBitmap(const SoftwareBitmap& bitmap, BitmapPixelFormat format) {
    requireBitmap(bitmap, "Convert");
    if (!isSupported(format))
        raise(winrt::result::invalidArgument,
              "Convert: pixel format " + std::to_string(static_cast<int>(format)) + " is not supported");
    if (bitmap->Format == format)
        return bitmap;
    auto converted = std::make_shared<SoftwareBitmapData>();
    converted->Format = format;
    converted->PixelWidth = bitmap->PixelWidth;
    converted->PixelHeight = bitmap->PixelHeight;
    converted->Pixels.resize(bitmap->Pixels.size());
    // Between the two formats red and blue change places, in either direction.
    libyuv::ARGBToABGR(bitmap->Pixels.data(), strideOf(*bitmap), converted->Pixels.data(), strideOf(*converted),
                       widthOf(*bitmap), heightOf(*bitmap));
    return converted;
}

} // namespace Platform::Imaging
