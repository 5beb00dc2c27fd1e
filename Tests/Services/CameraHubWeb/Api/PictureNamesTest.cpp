#include "Services/CameraHubWeb/Api/PictureNames.h"

#include <gtest/gtest.h>

namespace CameraHubWeb {
namespace {

TEST(PictureNamesTest, TheEndingBeginsAtTheLastPoint) {
    EXPECT_EQ(splitName("0123.png").id, "0123");
    EXPECT_EQ(splitName("0123.png").ending, ".png");
    EXPECT_EQ(splitName("0123.png.jpg").id, "0123.png");
    EXPECT_EQ(splitName(".jpg").id, "");
}

TEST(PictureNamesTest, WithoutAPointThereIsNoEnding) {
    EXPECT_EQ(splitName("0123").id, "0123");
    EXPECT_EQ(splitName("0123").ending, "");
    EXPECT_EQ(splitName("").ending, "");
}

TEST(PictureNamesTest, AnotherEndingTakesThePlaceOfTheLastOne) {
    EXPECT_EQ(withEnding("Desk_12.123Z.png", ".jpg"), "Desk_12.123Z.jpg");
}

} // namespace
} // namespace CameraHubWeb
