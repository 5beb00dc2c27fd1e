#include "Tools/Text/TimeText.h"

#include <gtest/gtest.h>

using namespace CommandLine;

TEST(TimeTextTest, TimesAreInUtcToTheMillisecond) {
    const std::chrono::system_clock::time_point time(std::chrono::milliseconds(1'795'265'602'123));
    EXPECT_EQ(utcText(time, "%Y-%m-%dT%H:%M:%S"), "2026-11-21T12:53:22.123Z");
    EXPECT_EQ(utcText(time, "%H-%M-%S"), "12-53-22.123Z");
}
