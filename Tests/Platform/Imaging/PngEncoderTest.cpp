#include "Platform/Imaging/PngEncoder.h"

#include "Platform/Imaging/ImageDecoder.h"
#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Support/RaisedError.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

namespace Platform::Imaging {
namespace {

std::uint32_t numberAt(const Bytes& file, std::size_t offset) {
    return static_cast<std::uint32_t>(file.at(offset)) << 24 | static_cast<std::uint32_t>(file.at(offset + 1)) << 16 |
           static_cast<std::uint32_t>(file.at(offset + 2)) << 8 | file.at(offset + 3);
}

/// The types of a file's chunks, neighbours of one type once.
std::vector<std::string> chunkTypes(const Bytes& file) {
    std::vector<std::string> types;
    for (std::size_t offset = 8; offset < file.size(); offset += 12 + numberAt(file, offset)) {
        const std::string type(file.begin() + static_cast<std::ptrdiff_t>(offset) + 4,
                               file.begin() + static_cast<std::ptrdiff_t>(offset) + 8);
        if (types.empty() || types.back() != type)
            types.push_back(type);
    }
    return types;
}

TEST(PngEncoderTest, WritesEightBitRgbWithoutInterlacing) {
    const Bytes file = encodePng(smoothPicture(7, 5));
    ASSERT_GT(file.size(), 29U);
    EXPECT_EQ(Bytes(file.begin(), file.begin() + 8), (Bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}));
    EXPECT_EQ(numberAt(file, 16), 7U);
    EXPECT_EQ(numberAt(file, 20), 5U);
    EXPECT_EQ(Bytes(file.begin() + 24, file.begin() + 29), (Bytes{8, 2, 0, 0, 0}));
}

TEST(PngEncoderTest, WritesNoAncillaryChunk) {
    EXPECT_THAT(chunkTypes(encodePng(noisyPicture(200, 100))), testing::ElementsAre("IHDR", "IDAT", "IEND"));
}

TEST(PngEncoderTest, KeepsEveryPixelAtAnyShape) {
    using Size = std::pair<std::uint32_t, std::uint32_t>;
    for (const auto& [width, height] : {Size{1, 1}, Size{1, 3000}, Size{3000, 1}, Size{17, 13}, Size{640, 480}}) {
        for (const RgbImage& image : {smoothPicture(width, height), noisyPicture(width, height)}) {
            const RgbImage decoded = decodeImage(encodePng(image));
            EXPECT_EQ(decoded.width, width);
            EXPECT_EQ(decoded.height, height);
            EXPECT_TRUE(decoded.pixels == image.pixels) << width << "x" << height;
        }
    }
}

TEST(PngEncoderTest, WritesTheSameBytesForTheSamePicture) {
    EXPECT_TRUE(encodePng(noisyPicture(64, 48)) == encodePng(noisyPicture(64, 48)));
}

TEST(PngEncoderTest, CompressesWhatIsSmooth) {
    const RgbImage image = smoothPicture(640, 480);
    EXPECT_LT(encodePng(image).size(), image.pixels.size() / 10);
}

TEST(PngEncoderTest, RefusesAPictureWithoutPixels) {
    EXPECT_EQ(raisedBy([] { encodePng({}); }), "80070057 PNG: 0 bytes are no picture of 0x0");
}

TEST(PngEncoderTest, RefusesPixelsThatDoNotFillTheSize) {
    EXPECT_EQ(raisedBy([] { encodePng({2, 2, Bytes(11)}); }), "80070057 PNG: 11 bytes are no picture of 2x2");
    EXPECT_EQ(raisedBy([] { encodePng({2, 2, Bytes(13)}); }), "80070057 PNG: 13 bytes are no picture of 2x2");
}

TEST(PngEncoderTest, RefusesAPictureBeyondTheLimits) {
    EXPECT_EQ(raisedBy([] { encodePng({32768, 1, Bytes(98304)}); }),
              "80070057 PNG: a picture of 32768x1 is not supported");
}

} // namespace
} // namespace Platform::Imaging
