#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Support/Growth.h"
#include "Tests/Support/RaisedError.h"

#include <gtest/gtest.h>
#include <turbojpeg.h>
#include <zlib.h>

#include <functional>
#include <string>

namespace Platform::Imaging {
namespace {

Bytes operator+(Bytes one, const Bytes& other) {
    one.insert(one.end(), other.begin(), other.end());
    return one;
}

Bytes repeated(const Bytes& piece, std::size_t size) {
    Bytes bytes;
    while (bytes.size() < size)
        bytes = std::move(bytes) + piece;
    return bytes;
}

Bytes part(const Bytes& bytes, std::size_t begin, std::size_t end) {
    return {bytes.begin() + static_cast<std::ptrdiff_t>(begin), bytes.begin() + static_cast<std::ptrdiff_t>(end)};
}

const Bytes jpeg = writeJpeg(smoothPicture(64, 48), TJSAMP_422);

/// The picture with bytes between its start mark and its first segment.
Bytes jpegWith(const Bytes& bytes) { return part(jpeg, 0, 2) + bytes + part(jpeg, 2, jpeg.size()); }

/// The file's first segment of that marker.
Bytes segment(const Bytes& file, std::uint8_t marker) {
    std::size_t at = 2;
    while (file.at(at + 1) != marker)
        at += 2 + std::size_t{256} * file.at(at + 2) + file.at(at + 3);
    return part(file, at, at + 2 + std::size_t{256} * file.at(at + 2) + file.at(at + 3));
}

Bytes longSegment(std::uint8_t marker) { return Bytes{0xFF, marker, 0xFF, 0xFF} + Bytes(0xFFFD, 0xFF); }

Bytes bigEndian(std::size_t number) {
    return {static_cast<std::uint8_t>(number >> 24), static_cast<std::uint8_t>(number >> 16),
            static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
}

Bytes chunk(const std::string& type, const Bytes& content) {
    const Bytes summed = Bytes(type.begin(), type.end()) + content;
    return bigEndian(content.size()) + summed + bigEndian(crc32(0, summed.data(), static_cast<uInt>(summed.size())));
}

Bytes packed(const Bytes& bytes) {
    Bytes result(compressBound(bytes.size()));
    uLongf size = result.size();
    compress2(result.data(), &size, bytes.data(), bytes.size(), Z_BEST_COMPRESSION);
    result.resize(size);
    return result;
}

constexpr std::size_t headEnd = 33; // of PNG: the signature and the chunk IHDR
constexpr std::size_t endSize = 12; // the chunk IEND

/// A picture with chunks in front of those of its pixels, and behind them.
Bytes pngWith(const Bytes& front, const Bytes& back = {}) {
    const Bytes file = encodePng(smoothPicture(64, 48));
    return part(file, 0, headEnd) + front + part(file, headEnd, file.size() - endSize) + back + chunk("IEND", {});
}

/// Grey of 64 pixels a row, its pixels in chunks of so many bytes.
Bytes pngInPieces(std::size_t rows, std::size_t pieceSize) {
    Bytes pixels;
    for (std::size_t row = 0; row < rows; ++row)
        pixels = std::move(pixels) + Bytes{0} + Bytes(64, static_cast<std::uint8_t>(row * 7));
    Bytes stored(compressBound(pixels.size()));
    uLongf size = stored.size();
    compress2(stored.data(), &size, pixels.data(), pixels.size(), Z_NO_COMPRESSION);
    Bytes chunks;
    for (std::size_t at = 0; at < size; at += pieceSize)
        chunks = std::move(chunks) + chunk("IDAT", part(stored, at, std::min(at + pieceSize, size)));
    return part(encodePng(smoothPicture(1, 1)), 0, 8) +
           chunk("IHDR", bigEndian(64) + bigEndian(rows) + Bytes{8, 0, 0, 0, 0}) + chunks + chunk("IEND", {});
}

const Bytes bomb = packed(Bytes(10'000'000, 'a')); // about 10 kB
const Bytes textBomb = chunk("zTXt", Bytes{'a', 0, 0} + bomb);
const Bytes profileBomb = chunk("iCCP", Bytes{'a', 0, 0} + bomb);

struct Shape {
    const char* name;
    std::function<Bytes(std::size_t)> file;
};

class ImagingGrowthTest : public testing::TestWithParam<Shape> {};

const Shape shapes[] = {
    {"JpegShortComments", [](std::size_t size) { return jpegWith(repeated({0xFF, 0xFE, 0, 2}, size)); }},
    {"JpegLongComments", [](std::size_t size) { return jpegWith(repeated(longSegment(0xFE), size)); }},
    {"JpegShortApplicationData", [](std::size_t size) { return jpegWith(repeated({0xFF, 0xE1, 0, 2}, size)); }},
    {"JpegLongApplicationData", [](std::size_t size) { return jpegWith(repeated(longSegment(0xE2), size)); }},
    {"JpegHeads", [](std::size_t size) { return jpegWith(repeated(segment(jpeg, 0xE0), size)); }},
    {"JpegFillBytes", [](std::size_t size) { return jpegWith(Bytes(size, 0xFF)); }},
    {"JpegQuantisationTables", [](std::size_t size) { return jpegWith(repeated(segment(jpeg, 0xDB), size)); }},
    {"JpegHuffmanTables", [](std::size_t size) { return jpegWith(repeated(segment(jpeg, 0xC4), size)); }},
    {"JpegRestartIntervals", [](std::size_t size) { return jpegWith(repeated({0xFF, 0xDD, 0, 4, 0, 1}, size)); }},
    {"JpegRestartMarks",
     [](std::size_t size) { return part(jpeg, 0, jpeg.size() - 2) + repeated({0xFF, 0xD0}, size); }},
    {"JpegStartMarks", [](std::size_t size) { return repeated({0xFF, 0xD8}, size); }},
    {"JpegZerosBeforeTheEnd",
     [](std::size_t size) { return part(jpeg, 0, jpeg.size() - 2) + Bytes(size) + Bytes{0xFF, 0xD9}; }},
    {"JpegBehindTheEnd", [](std::size_t size) { return jpeg + repeated(jpeg, size); }},
    {"PngTexts", [](std::size_t size) { return pngWith(repeated(chunk("tEXt", {'a', 0}), size)); }},
    {"PngEmptyChunks", [](std::size_t size) { return pngWith(repeated(chunk("teSt", {}), size)); }},
    {"PngChunksBehindThePixels", [](std::size_t size) { return pngWith({}, repeated(chunk("tEXt", {'a', 0}), size)); }},
    {"PngPackedTexts", [](std::size_t size) { return pngWith(repeated(textBomb, size)); }},
    {"PngPackedTextsBehindThePixels", [](std::size_t size) { return pngWith({}, repeated(textBomb, size)); }},
    {"PngProfiles", [](std::size_t size) { return pngWith(repeated(profileBomb, size)); }},
    {"PngTransparencies", [](std::size_t size) { return pngWith(repeated(chunk("tRNS", Bytes(6)), size)); }},
    {"PngPalettes", [](std::size_t size) { return pngWith(repeated(chunk("PLTE", Bytes(768)), size)); }},
    {"PngPixelsByteByByte", [](std::size_t size) { return pngInPieces(size / 13 / 65, 1); }},
    {"PngEmptyPixelChunks", [](std::size_t size) { return pngWith(repeated(chunk("IDAT", {}), size)); }},
    {"PngTooManyPixels", [](std::size_t size) { return pngWith({}, repeated(chunk("IDAT", bomb), size)); }},
};

TEST_P(ImagingGrowthTest, ReadingTakesTimeInProportionToTheFile) {
    EXPECT_LT(growth([](std::size_t size) -> std::function<void()> {
                  return [file = GetParam().file(size)] {
                      raisedBy([&] { decodeImage(file); }); // many are no pictures
                      raisedBy([&] { convertFrame({FrameFormat::Jpeg, 64, 48}, file); });
                  };
              }),
              linearGrowth);
}

INSTANTIATE_TEST_SUITE_P(Shapes, ImagingGrowthTest, testing::ValuesIn(shapes),
                         [](const auto& shape) { return std::string(shape.param.name); });

} // namespace
} // namespace Platform::Imaging
