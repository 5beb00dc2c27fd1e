#include "Services/CameraHubWeb/Stills/PlainPng.h"

#include "Platform/Imaging/PngEncoder.h"
#include "Platform/Imaging/PngReader.h"
#include "Services/CameraHubWeb/Stills/JpegPicture.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace CameraHubWeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Platform::Imaging::encodePng;
using Platform::Imaging::PngReader;
using Platform::Imaging::RgbImage;

void append(Bytes& bytes, const Bytes& more) { bytes.insert(bytes.end(), more.begin(), more.end()); }

Bytes number(std::size_t value) {
    return {static_cast<std::uint8_t>(value >> 24U), static_cast<std::uint8_t>(value >> 16U),
            static_cast<std::uint8_t>(value >> 8U), static_cast<std::uint8_t>(value)};
}

Bytes chunk(const std::string& type, const Bytes& data) {
    Bytes checked(type.begin(), type.end());
    append(checked, data);
    Bytes bytes = number(data.size());
    append(bytes, checked);
    append(bytes, number(crc32(0, checked.data(), static_cast<uInt>(checked.size()))));
    return bytes;
}

Bytes packed(const Bytes& bytes) {
    Bytes result(compressBound(bytes.size()));
    uLongf size = result.size();
    compress(result.data(), &size, bytes.data(), bytes.size());
    result.resize(size);
    return result;
}

/// A file in the parts that a test may alter.
struct Parts {
    std::uint32_t width = 7;
    std::uint32_t height = 5;
    /// Bits, kind of colours, compression, filtering, interlacing.
    Bytes kind = {8, 2, 0, 0, 0};
    /// Of the rows, from the first on; noise behind each.
    Bytes filters = {0, 1, 2, 3, 4};
    Bytes beforePixels;
    Bytes afterEnd;

    /// Filters and noise.
    Bytes rows() const {
        std::mt19937 random(7);
        Bytes bytes;
        for (std::uint32_t y = 0; y < height; ++y) {
            bytes.push_back(filters.at(y % filters.size()));
            for (std::uint32_t x = 0; x < 3 * width; ++x)
                bytes.push_back(static_cast<std::uint8_t>(random()));
        }
        return bytes;
    }

    Bytes file(const Bytes& pixels) const {
        Bytes bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
        Bytes head = number(width);
        append(head, number(height));
        append(head, kind);
        append(bytes, chunk("IHDR", head));
        append(bytes, beforePixels);
        append(bytes, chunk("IDAT", Bytes(pixels.begin(), pixels.begin() + 20)));
        append(bytes, chunk("IDAT", Bytes(pixels.begin() + 20, pixels.end())));
        append(bytes, chunk("IEND", {}));
        append(bytes, afterEnd);
        return bytes;
    }

    Bytes file() const { return file(packed(rows())); }
};

/// Empty where it cannot be read.
Bytes plainPixels(const Bytes& png) {
    const auto pixels = readPlainPng(png);
    Bytes result;
    for (std::uint32_t y = 0; pixels && y < pixels->height; ++y) {
        const std::uint8_t* const row = pixels->pixels() + y * pixels->stride();
        result.insert(result.end(), row, row + std::size_t{3} * pixels->width);
    }
    return result;
}

TEST(PlainPngTest, EveryFilterGivesWhatTheReaderOfAllKindsGives) {
    for (const Bytes& filters : {Bytes{0}, {1}, {2}, {3}, {4}, {0, 1, 2, 3, 4}, {4, 3, 2, 1, 0}})
        for (const auto& [width, height] : {std::pair{1U, 12U}, {2U, 9U}, {33U, 21U}, {640U, 10U}}) {
            Parts parts;
            parts.width = width;
            parts.height = height;
            parts.filters = filters;
            const Bytes png = parts.file();
            const Bytes expected = PngReader(png).readPixels().pixels;
            ASSERT_FALSE(expected.empty());
            EXPECT_TRUE(plainPixels(png) == expected) << int{filters.front()} << " " << width;
        }
}

TEST(PlainPngTest, WhatTheHubMakesIsPlain) {
    RgbImage image{300, 200, {}};
    for (std::size_t at = 0; at < std::size_t{3} * 300 * 200; ++at)
        image.pixels.push_back(static_cast<std::uint8_t>(at * at / 1000));
    const auto pixels = readPlainPng(encodePng(image));
    ASSERT_TRUE(pixels);
    EXPECT_EQ(pixels->width, 300);
    EXPECT_EQ(pixels->height, 200);
    EXPECT_TRUE(plainPixels(encodePng(image)) == image.pixels);
}

TEST(PlainPngTest, OtherKindsAreLeftToTheOtherReader) {
    for (const Bytes& kind : {Bytes{16, 2, 0, 0, 0},
                              {8, 0, 0, 0, 0},
                              {8, 3, 0, 0, 0},
                              {8, 6, 0, 0, 0},
                              {8, 2, 1, 0, 0},
                              {8, 2, 0, 1, 0},
                              {8, 2, 0, 0, 1}}) {
        Parts parts;
        parts.kind = kind;
        EXPECT_FALSE(readPlainPng(parts.file()));
    }
    for (const auto& [width, height] : {std::pair{0U, 5U}, {7U, 0U}, {40000U, 5U}, {7U, 40000U}, {30000U, 30000U}}) {
        Parts claiming;
        const Bytes pixels = packed(claiming.rows());
        claiming.width = width;
        claiming.height = height;
        EXPECT_FALSE(readPlainPng(claiming.file(pixels)));
    }
}

TEST(PlainPngTest, AFileWithMoreInItGivesTheSamePictureByTheOtherReader) {
    Parts parts;
    const Bytes plain = parts.file();
    parts.beforePixels = chunk("tEXt", {'a', 0, 'b'});
    EXPECT_TRUE(readPlainPng(plain));
    EXPECT_FALSE(readPlainPng(parts.file()));
    EXPECT_EQ(encodeJpeg(parts.file(), {}, 85), encodeJpeg(plain, {}, 85));
}

TEST(PlainPngTest, NoByteOfAFileCanBeAltered) {
    const Bytes png = Parts().file();
    ASSERT_TRUE(readPlainPng(png));
    for (std::size_t at = 0; at < png.size(); ++at) {
        Bytes altered = png;
        altered[at] ^= 1U;
        EXPECT_FALSE(readPlainPng(altered)) << at;
    }
}

TEST(PlainPngTest, NoByteOfAFileCanBeMissing) {
    const Bytes png = Parts().file();
    for (std::size_t size = 0; size < png.size(); ++size)
        EXPECT_FALSE(readPlainPng(std::span(png).first(size))) << size;
    Parts longer;
    longer.afterEnd = {0};
    EXPECT_FALSE(readPlainPng(longer.file()));
}

TEST(PlainPngTest, PixelsThatAreTooFewOrTooManyOrWrongAreNotTaken) {
    const Parts parts;
    Bytes rows = parts.rows();
    rows.push_back(0);
    EXPECT_FALSE(readPlainPng(parts.file(packed(rows))));
    rows.resize(rows.size() - 2);
    EXPECT_FALSE(readPlainPng(parts.file(packed(rows))));
    Bytes damaged = packed(parts.rows());
    damaged.back() ^= 1U; // of the checksum
    EXPECT_FALSE(readPlainPng(parts.file(damaged)));
    Parts wrong;
    wrong.filters = {0, 5};
    EXPECT_FALSE(readPlainPng(wrong.file()));
}

} // namespace
} // namespace CameraHubWeb
