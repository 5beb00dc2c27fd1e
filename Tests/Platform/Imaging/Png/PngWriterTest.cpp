#include "Platform/Imaging/Png/PngWriter.h"

#include "Tests/Platform/Imaging/Png/InstructionSets.h"
#include "Tests/Platform/Imaging/Png/ReferenceDecoders.h"
#include "Tests/Platform/Imaging/Png/ThreadBeside.h"
#include "Tests/Support/ReplacedAllocation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <random>

namespace Platform::Imaging::Png {
namespace {

Bytes fileOf(const RgbImage& image, const RunBeside& runBeside = {}) {
    PngWriter writer(image.width, image.height, runBeside);
    auto row = image.pixels.begin();
    for (std::uint32_t y = 0; y < image.height; ++y, row += std::ptrdiff_t{3} * image.width) {
        std::copy_n(row, std::size_t{3} * image.width, writer.nextRow().begin());
        writer.writeRow();
    }
    return writer.takeFile();
}

struct Kind {
    const char* name;
    std::function<std::uint8_t(std::size_t i, std::uint32_t random)> sample;
};

std::uint8_t byte(std::size_t value) { return static_cast<std::uint8_t>(value); }

const std::vector<Kind> kinds{
    {"black", [](std::size_t, std::uint32_t) { return byte(0); }},
    {"constant", [](std::size_t, std::uint32_t) { return byte(200); }},
    {"noise", [](std::size_t, std::uint32_t random) { return byte(random); }},
    {"a little noise", [](std::size_t, std::uint32_t random) { return byte(100 + random % 4); }},
    {"gradient", [](std::size_t i, std::uint32_t) { return byte(i / 97); }},
    {"noisy gradient", [](std::size_t i, std::uint32_t random) { return byte(i / 97 + random % 3); }},
    {"saturated areas", [](std::size_t i, std::uint32_t random) { return byte(i / 999 % 2 ? 255 : random); }},
    {"alternating", [](std::size_t i, std::uint32_t) { return byte(i % 2 ? 255 : 0); }},
    {"sparse dots", [](std::size_t, std::uint32_t random) { return byte(random % 300 == 0 ? 255 : 0); }},
    {"some noise", [](std::size_t i, std::uint32_t random) { return byte(i / 300'000 % 2 ? random : 7); }},
};

RgbImage picture(const Kind& kind, std::uint32_t width, std::uint32_t height) {
    RgbImage image{width, height, Bytes(std::size_t{3} * width * height)};
    std::minstd_rand random(width + height);
    for (std::size_t i = 0; i < image.pixels.size(); ++i)
        image.pixels[i] = kind.sample(i, static_cast<std::uint32_t>(random() >> 8));
    return image;
}

/// One long line of samples as a picture: runs of zeros of each length, a dot behind each.
RgbImage pictureOfRuns(std::uint32_t width) {
    Bytes samples;
    for (const std::size_t before : {0, 1, 31, 40, 57, 63, 64})
        for (const std::size_t run : {7, 8, 9, 56, 64, 65, 258, 259, 260, 261, 516, 517, 518, 519, 520, 5000}) {
            samples.insert(samples.end(), before, 90);
            samples.insert(samples.end(), run, 0);
            samples.push_back(255);
        }
    const std::uint32_t height = static_cast<std::uint32_t>(samples.size()) / (3 * width) + 1;
    samples.resize(std::size_t{3} * width * height);
    return {width, height, samples};
}

TEST(PngWriterTest, KeepsEveryPixelAtAnyWidthAroundTheVectors) {
    for (std::uint32_t width = 1; width <= 200; ++width)
        for (std::uint32_t height = 1; height <= 5; ++height) {
            const RgbImage image = noisyPicture(width, height);
            EXPECT_TRUE(pixelsOf(fileOf(image)) == image.pixels) << width << "x" << height;
        }
}

TEST(PngWriterTest, KeepsEveryPixelOfAnyKindOfPicture) {
    using Size = std::pair<std::uint32_t, std::uint32_t>;
    for (const auto& [width, height] : {Size{1, 1}, Size{1, 2}, Size{2, 1}, Size{1, 3000}, Size{3000, 1}, Size{333, 7},
                                        Size{1, 70000}, Size{500, 300}})
        for (const Kind& kind : kinds) {
            const RgbImage image = picture(kind, width, height);
            EXPECT_TRUE(pixelsOf(fileOf(image)) == image.pixels) << kind.name << ", " << width << "x" << height;
        }
}

TEST(PngWriterTest, KeepsEveryPixelOfRowsAsLongAsABlockAndLonger) {
    for (const std::uint32_t width : {87381U, 100'000U})
        for (const Kind& kind : kinds) {
            const RgbImage image = picture(kind, width, 2);
            EXPECT_TRUE(pixelsOf(fileOf(image)) == image.pixels) << kind.name << ", " << width;
        }
}

TEST(PngWriterTest, KeepsRunsOverTheEndsOfStepsRowsAndBlocks) {
    for (const std::uint32_t width : {1U, 7U, 21U, 22U, 100U, 1000U, 5000U}) {
        const RgbImage image = pictureOfRuns(width);
        EXPECT_TRUE(pixelsOf(fileOf(image)) == image.pixels) << width;
    }
}

TEST(PngWriterTest, WritesTheSameBytesWithEveryInstructionSet) {
    std::vector<RgbImage> images{pictureOfRuns(100)};
    for (const Kind& kind : kinds)
        images.push_back(picture(kind, 333, 300));
    for (const RgbImage& image : images) {
        const Bytes expected = fileOf(image);
        withEachInstructionSet([&](const char* name) { EXPECT_TRUE(fileOf(image) == expected) << name; });
    }
}

TEST(PngWriterTest, WritesTheSameBytesWithTwoThreads) {
    for (const Kind& kind : kinds) {
        const RgbImage image = picture(kind, 600, 600);
        ThreadBeside beside;
        const Bytes file = fileOf(image, beside.run());
        EXPECT_TRUE(beside.isUsed());
        EXPECT_TRUE(file == fileOf(image)) << kind.name;
        EXPECT_EQ(unpacked(file).filteredRows.size(), std::size_t{1801} * 600) << kind.name;
    }
}

std::atomic<int> largeAllocations;

TEST(PngWriterTest, MakesNothingLargeButTheFileWhenThePictureBeforeHadItsSize) {
    const RgbImage image = noisyPicture(600, 600);
    const RunBeside never = [](const std::function<void()>&) {};
    fileOf(image, never);
    largeAllocations = 0;
    allowAllocationsBy([](std::size_t size) {
        if (size >= 50'000)
            ++largeAllocations;
        return true;
    });
    fileOf(image, never);
    allowAllocationsBy(nullptr);
    EXPECT_EQ(largeAllocations, 1);
}

TEST(PngWriterTest, TakesNoOtherThreadForASmallPicture) {
    ThreadBeside beside;
    fileOf(noisyPicture(300, 200), beside.run());
    EXPECT_FALSE(beside.isUsed());
}

TEST(PngWriterTest, MayGoBeforeItsLastRow) {
    for (const std::uint32_t rows : {0U, 1U, 300U, 699U}) {
        ThreadBeside beside;
        PngWriter writer(1000, 700, beside.run());
        for (std::uint32_t y = 0; y < rows; ++y)
            writer.writeRow();
    }
}

TEST(PngWriterTest, IsTriedWithThePlainInstructionsToo) {
    std::vector<std::string> names;
    withEachInstructionSet([&names](const char* name) { names.emplace_back(name); });
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.back(), plainInstructionSet());
}

TEST(PngWriterTest, StoresWhatCannotBeCompressed) {
    const RgbImage image = noisyPicture(2000, 500);
    EXPECT_LT(fileOf(image).size(), image.pixels.size() + image.pixels.size() / 1000 + 100);
    const RgbImage small = noisyPicture(5, 3);
    EXPECT_LT(fileOf(small).size(), small.pixels.size() + 100);
}

TEST(PngWriterTest, WritesOneChunkOfDataForEachBlock) {
    const UnpackedPng png = unpacked(fileOf(picture(kinds[2], 1000, 200))); // of 3001 bytes a row, 88 fill a block
    EXPECT_THAT(png.chunkTypes, testing::ElementsAre("IHDR", "IDAT", "IDAT", "IDAT", "IEND"));
    EXPECT_EQ(png.filteredRows.size(), std::size_t{3001} * 200);
}

} // namespace
} // namespace Platform::Imaging::Png
