#include "Tests/Tools/CameraHub/Pictures.h"

#include <gtest/gtest.h>

using namespace CommandLine;

TEST(RgbPictureTest, APngFileGivesItsPixels) {
    const RgbPicture picture = decodePng(pngOf({2, 1, {1, 2, 3, 253, 254, 255}}));
    EXPECT_EQ(picture.width, 2);
    EXPECT_EQ(picture.height, 1);
    EXPECT_EQ(picture.samples, (std::vector<std::uint8_t>{1, 2, 3, 253, 254, 255}));
}

TEST(RgbPictureTest, WhatIsNoWholePngFileIsBroken) {
    const std::vector<std::uint8_t> whole = pngOf(uniform(40, 30, 7));
    for (std::size_t size = 0; size < whole.size() - 12; size += 7) // without the end mark, all of a picture is there
        EXPECT_THROW(decodePng(std::span(whole).first(size)), BrokenPicture) << size;
    EXPECT_THROW(decodePng(std::vector<std::uint8_t>(100, 'x')), BrokenPicture);
}
