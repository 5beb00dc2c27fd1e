#include "Services/CameraHubWeb/Api/Schedule.h"

#include <gtest/gtest.h>

#include <future>
#include <string>

namespace CameraHubWeb {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

TEST(ScheduleTest, WhatIsDueEarlierIsCalledEarlier) {
    Schedule schedule;
    std::string order;
    std::promise<void> ended;
    const auto now = steady_clock::now();
    schedule.at(now + milliseconds(60), [&] {
        order += 'c';
        ended.set_value();
    });
    schedule.at(now + milliseconds(30), [&] { order += 'b'; });
    schedule.at(now, [&] { order += 'a'; });
    ended.get_future().wait();
    EXPECT_EQ(order, "abc");
}

TEST(ScheduleTest, NothingIsCalledBeforeItsTime) {
    Schedule schedule;
    std::promise<steady_clock::time_point> called;
    const auto due = steady_clock::now() + milliseconds(20);
    schedule.at(due, [&] { called.set_value(steady_clock::now()); });
    EXPECT_GE(called.get_future().get(), due);
}

TEST(ScheduleTest, WhatIsCalledMayScheduleMore) {
    Schedule schedule;
    std::promise<void> ended;
    schedule.at(steady_clock::now(), [&] { schedule.at(steady_clock::now(), [&] { ended.set_value(); }); });
    ended.get_future().wait();
}

TEST(ScheduleTest, WhatIsNotDueIsDroppedAtTheEnd) {
    bool isCalled = false;
    {
        Schedule().at(steady_clock::now() + std::chrono::hours(1), [&] { isCalled = true; });
    }
    EXPECT_FALSE(isCalled);
}

} // namespace
} // namespace CameraHubWeb
