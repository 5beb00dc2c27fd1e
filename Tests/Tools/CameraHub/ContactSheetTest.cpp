#include "Tools/CameraHub/Picture/ContactSheet.h"

#include "Tests/Tools/CameraHub/Pictures.h"

#include <gmock/gmock.h>

#include <array>

using namespace CommandLine;

namespace {

using Colour = std::array<int, 3>;

Colour at(const RgbPicture& picture, int x, int y) {
    const std::uint8_t* pixel = &picture.samples[std::size_t{3} * (y * picture.width + x)];
    return {pixel[0], pixel[1], pixel[2]};
}

RgbPicture sheetOf(int count) {
    ContactSheet sheet;
    for (int i = 0; i < count; ++i)
        sheet.add(uniform(640, 480, static_cast<std::uint8_t>(100 + 10 * i)), "1/64 s");
    return decodePng(sheet.png());
}

constexpr Colour background = {33, 33, 33};

} // namespace

TEST(ContactSheetTest, PicturesStandInRowsInTheirOrder) {
    const RgbPicture sheet = sheetOf(3);
    EXPECT_EQ(sheet.width, 12 + 2 * 332);
    EXPECT_EQ(sheet.height, 12 + 2 * 282);
    EXPECT_EQ(at(sheet, 160, 120), (Colour{100, 100, 100}));
    EXPECT_EQ(at(sheet, 160 + 332, 120), (Colour{110, 110, 110}));
    EXPECT_EQ(at(sheet, 160, 120 + 282), (Colour{120, 120, 120}));
    EXPECT_EQ(at(sheet, 160 + 332, 120 + 282), background);
}

TEST(ContactSheetTest, ASmallPictureIsNotEnlargedAndALongOneStaysWithinItsCell) {
    ContactSheet sheet;
    sheet.add(uniform(10, 10, 200), "");
    sheet.add(uniform(3000, 30, 200), "");
    const RgbPicture picture = decodePng(sheet.png());
    EXPECT_EQ(at(picture, 12 + 160, 12 + 120), (Colour{200, 200, 200}));
    EXPECT_EQ(at(picture, 12 + 160 - 8, 12 + 120), background);
    EXPECT_EQ(at(picture, 332 + 13, 12 + 120), (Colour{200, 200, 200}));
    EXPECT_EQ(at(picture, 332 + 12 + 160, 12 + 120 - 5), background);
}

TEST(ContactSheetTest, EachCaptionStandsBelowItsPicture) {
    ContactSheet sheet;
    sheet.add(uniform(320, 240, 100), "1/64 s (15.625 ms)");
    const RgbPicture with = decodePng(sheet.png());
    const RgbPicture without = [] {
        ContactSheet bare;
        bare.add(uniform(320, 240, 100), "");
        return decodePng(bare.png());
    }();
    int above = 0;
    int below = 0;
    for (int y = 0; y < with.height; ++y)
        for (int x = 0; x < with.width; ++x)
            (y < 12 + 240 ? above : below) += at(with, x, y) == at(without, x, y) ? 0 : 1;
    EXPECT_EQ(above, 0);
    EXPECT_GT(below, 300); // pixels of eighteen letters
}
