#include "Tools/Text/DurationText.h"

#include <gmock/gmock.h>

using namespace CommandLine;
using namespace std::chrono_literals;
using testing::Optional;

TEST(DurationTextTest, IsReadAsPeopleWriteIt) {
    EXPECT_THAT(parseDuration("250ms"), Optional(250ms));
    EXPECT_THAT(parseDuration("10s"), Optional(10s));
    EXPECT_THAT(parseDuration("0.5 s"), Optional(500ms));
    EXPECT_THAT(parseDuration("2min"), Optional(2min));
    EXPECT_THAT(parseDuration("1h"), Optional(1h));
    EXPECT_THAT(parseDuration("0"), Optional(0ms));
    EXPECT_THAT(parseDuration("0s"), Optional(0ms));
}

TEST(DurationTextTest, IsNoneWithoutAUnitOrAboveADay) {
    for (const char* text : {"", "10", "s", "-1s", "1m", "1us", "1e3s", "10s ", "1d"})
        EXPECT_EQ(parseDuration(text), std::nullopt) << text;
    EXPECT_THAT(parseDuration("24h"), Optional(24h));
    EXPECT_EQ(parseDuration("86400001ms"), std::nullopt);
}

TEST(DurationTextTest, IsWrittenInTheUnitsOfItsSize) {
    EXPECT_EQ(durationText(0ms), "0 ms");
    EXPECT_EQ(durationText(999ms), "999 ms");
    EXPECT_EQ(durationText(1000ms), "1 s");
    EXPECT_EQ(durationText(2499ms), "2.4 s");
    EXPECT_EQ(durationText(59999ms), "59.9 s");
    EXPECT_EQ(durationText(60s), "1 min");
    EXPECT_EQ(durationText(125s), "2 min 5 s");
}
