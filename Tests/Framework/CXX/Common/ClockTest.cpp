#include "Tests/Support/FakeClock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace std::chrono_literals;
using testing::ElementsAre;

namespace {

TEST(ClockTest, SleepsAtLeastThatLong) {
    const auto before = std::chrono::steady_clock::now();
    Halden::currentClock()->sleepFor(20ms);
    EXPECT_GE(std::chrono::steady_clock::now() - before, 20ms);
}

TEST(ClockTest, DeadlineLiesTheLimitAhead) {
    const auto before = std::chrono::steady_clock::now();
    const auto deadline = Halden::currentClock()->deadlineAfter(10000ms);
    const auto after = std::chrono::steady_clock::now();
    EXPECT_GE(deadline, before + 10000ms);
    EXPECT_LE(deadline, after + 10000ms);
}

TEST(ClockTest, NullBringsTheRealClockBack) {
    const auto fake = std::make_shared<FakeClock>();
    Halden::setClockForTesting(fake);
    EXPECT_EQ(Halden::currentClock(), fake);
    Halden::setClockForTesting(nullptr);
    ASSERT_NE(Halden::currentClock(), nullptr);
    EXPECT_NE(Halden::currentClock(), fake);
}

TEST(FakeClockTest, RecordsInOrderWithoutWaiting) {
    const auto fake = std::make_shared<FakeClock>();
    const auto before = std::chrono::steady_clock::now();
    {
        const ScopedClock scope(fake);
        Halden::currentClock()->sleepFor(1h);
        Halden::currentClock()->deadlineAfter(10000ms);
        Halden::currentClock()->sleepFor(500ms);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - before, 1min);
    EXPECT_THAT(fake->sleeps(), ElementsAre(std::chrono::milliseconds(1h), 500ms));
    EXPECT_THAT(fake->deadlines(), ElementsAre(10000ms));
    ASSERT_EQ(fake->calls().size(), 3U);
    EXPECT_EQ(fake->calls()[1], (FakeClock::Call{FakeClock::Call::Kind::Deadline, 10000ms}));
    EXPECT_NE(Halden::currentClock(), fake);
}

TEST(FakeClockTest, DividesWhatItWaits) {
    FakeClock fake(10, 1000);
    const auto before = std::chrono::steady_clock::now();
    fake.sleepFor(200ms);
    EXPECT_GE(std::chrono::steady_clock::now() - before, 20ms);
    const auto deadline = fake.deadlineAfter(10000ms);
    EXPECT_LT(deadline, std::chrono::steady_clock::now() + 11ms);
}

} // namespace
