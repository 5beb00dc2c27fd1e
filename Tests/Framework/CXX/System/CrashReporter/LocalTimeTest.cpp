#include "Framework/CXX/System/CrashReporter/LocalTime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace Halden::System {

namespace {

class TimeZone {
public:
    explicit TimeZone(const char* zone) {
        if (const char* before = std::getenv("TZ"))
            _before = before;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~TimeZone() {
        if (_before)
            setenv("TZ", _before->c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    std::optional<std::string> _before;
};

constexpr const char* centralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr std::time_t winterNoon2026 = 1767355200; // 2026-01-02 12:00:00 UTC
constexpr std::time_t day = 24 * 60 * 60;

void expectAgreement(const UtcOffsets& offsets, std::time_t moment) {
    std::tm expected{};
    localtime_r(&moment, &expected);
    const LocalTime actual = offsets.localTime(moment);
    ASSERT_EQ(actual.year, expected.tm_year + 1900) << moment;
    ASSERT_EQ(static_cast<int>(actual.month), expected.tm_mon + 1) << moment;
    ASSERT_EQ(static_cast<int>(actual.day), expected.tm_mday) << moment;
    ASSERT_EQ(actual.hour, expected.tm_hour) << moment;
    ASSERT_EQ(actual.minute, expected.tm_min) << moment;
    ASSERT_EQ(actual.second, expected.tm_sec) << moment;
    ASSERT_EQ(actual.offsetInSeconds, expected.tm_gmtoff) << moment;
}

} // namespace

TEST(LocalTimeTest, KnowTheOffsetOfTheirStart) {
    const TimeZone zone(centralEurope);
    UtcOffsets offsets;
    offsets.learn(winterNoon2026);
    const LocalTime time = offsets.localTime(winterNoon2026 + 61);
    EXPECT_EQ(time.year, 2026);
    EXPECT_EQ(time.month, 1u);
    EXPECT_EQ(time.day, 2u);
    EXPECT_EQ(time.hour, 13);
    EXPECT_EQ(time.minute, 1);
    EXPECT_EQ(time.second, 1);
    EXPECT_EQ(time.offsetInSeconds, 3600);
}

TEST(LocalTimeTest, ChangeToTheSecondWithDaylightSavingTime) {
    const TimeZone zone(centralEurope);
    UtcOffsets offsets;
    offsets.learn(winterNoon2026);
    constexpr std::time_t change = 1774746000; // 2026-03-29 01:00:00 UTC
    EXPECT_EQ(offsets.localTime(change - 1).offsetInSeconds, 3600);
    EXPECT_EQ(offsets.localTime(change - 1).hour, 1);
    EXPECT_EQ(offsets.localTime(change).offsetInSeconds, 7200);
    EXPECT_EQ(offsets.localTime(change).hour, 3);
}

TEST(LocalTimeTest, AgreeWithTheCLibraryForFiveYears) {
    for (const char* name :
         {centralEurope, "UTC0", "XXX-5:45", "NST3:30NDT,M3.2.0,M11.1.0", "AEST-10AEDT,M10.1.0,M4.1.0/3"}) {
        const TimeZone zone(name);
        UtcOffsets offsets;
        offsets.learn(winterNoon2026);
        for (std::time_t moment = winterNoon2026; moment < winterNoon2026 + 5 * 365 * day; moment += 7207)
            expectAgreement(offsets, moment);
    }
}

} // namespace Halden::System
