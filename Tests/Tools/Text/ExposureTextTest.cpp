#include "Tools/Text/ExposureText.h"

#include <gmock/gmock.h>

using namespace CommandLine;
using namespace std::chrono_literals;
using testing::Optional;

TEST(ExposureTextTest, IsReadAsPeopleWriteIt) {
    EXPECT_THAT(parseExposure("20ms"), Optional(20000us));
    EXPECT_THAT(parseExposure("20 ms"), Optional(20000us));
    EXPECT_THAT(parseExposure("1/50s"), Optional(20000us));
    EXPECT_THAT(parseExposure("1/50"), Optional(20000us));
    EXPECT_THAT(parseExposure("1.5/2 s"), Optional(750000us));
    EXPECT_THAT(parseExposure("20000us"), Optional(20000us));
    EXPECT_THAT(parseExposure("20\u00b5s"), Optional(20us));
    EXPECT_THAT(parseExposure("20\u03bcs"), Optional(20us));
    EXPECT_THAT(parseExposure("0.5s"), Optional(500000us));
    EXPECT_THAT(parseExposure(".5s"), Optional(500000us));
    EXPECT_THAT(parseExposure("1s"), Optional(1000000us));
}

TEST(ExposureTextTest, IsRoundedToTheNearestMicrosecond) {
    EXPECT_THAT(parseExposure("1/8192s"), Optional(122us));
    EXPECT_THAT(parseExposure("1/3s"), Optional(333333us));
    EXPECT_THAT(parseExposure("0.0006ms"), Optional(1us));
}

TEST(ExposureTextTest, IsNoneWithoutANumberOrAUnit) {
    for (const char* text :
         {"",       "ms",     "20",    "20m", "20 ms ", " 20ms",  "-20ms", "+20ms",   "1e3us", "1.2.3s", ".s",
          "20,5ms", "0x10us", "nan s", "1/s", "1/50ms", "1/-50s", "1/0s",  "1/50/2s", "/50s",  "20MS"})
        EXPECT_EQ(parseExposure(text), std::nullopt) << text;
}

TEST(ExposureTextTest, IsWithinWhatTheHubTakes) {
    EXPECT_THAT(parseExposure("1us"), Optional(1us));
    EXPECT_EQ(parseExposure("0us"), std::nullopt);
    EXPECT_EQ(parseExposure("0.4us"), std::nullopt);
    EXPECT_THAT(parseExposure("2147483647us"), Optional(2147483647us));
    EXPECT_EQ(parseExposure("2147483648us"), std::nullopt);
    EXPECT_EQ(parseExposure("99999999999999999999999999999999s"), std::nullopt);
}

TEST(ExposureTextTest, OfAPowerOfTwoIsAFractionWhetherItWasRoundedOrCutOff) {
    EXPECT_EQ(exposureText(15625us), "1/64 s (15.625 ms)");
    EXPECT_EQ(exposureText(122us), "1/8192 s (122 \u00b5s)");
    EXPECT_EQ(exposureText(976us), "1/1024 s (976 \u00b5s)");
    EXPECT_EQ(exposureText(977us), "1/1024 s (977 \u00b5s)");
    EXPECT_EQ(exposureText(500000us), "1/2 s (500 ms)");
}

TEST(ExposureTextTest, OfAFractionOfFewDigitsIsThatFraction) {
    EXPECT_EQ(exposureText(20000us), "1/50 s (20 ms)");
    EXPECT_EQ(exposureText(33333us), "1/30 s (33.333 ms)");
    EXPECT_EQ(exposureText(625us), "1/1600 s (625 \u00b5s)");
}

TEST(ExposureTextTest, OfAnyOtherTimeIsADecimalNumber) {
    EXPECT_EQ(exposureText(300ms), "300 ms");
    EXPECT_EQ(exposureText(1s), "1 s");
    EXPECT_EQ(exposureText(2500ms), "2.5 s");
    EXPECT_EQ(exposureText(813us), "1/1230 s (813 \u00b5s)");
    EXPECT_EQ(exposureText(809us), "809 \u00b5s");
    EXPECT_EQ(exposureText(0us), "0 \u00b5s");
}

TEST(ExposureTextTest, OfARangeTellsWhenItCannotBeChanged) {
    EXPECT_EQ(exposureRangeText(122us, 1s), "1/8192 s to 1 s");
    EXPECT_EQ(exposureRangeText(0us, 0us), "fixed");
}
