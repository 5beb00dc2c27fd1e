#include "Framework/CXX/Network/TimerQueue.h"

#include <gtest/gtest.h>

#include <QObject>
#include <QTimerEvent>
#include <functional>
#include <map>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr int longInterval = 1'000'000; // ms; is not over before the test is

/// Notes the timers whose events it gets, and does what is to be done then.
class Receiver : public QObject {
public:
    std::vector<int> delivered;
    std::map<int, std::function<void()>> actions; // by id

protected:
    void timerEvent(QTimerEvent* event) override {
        delivered.push_back(event->timerId());
        if (const auto action = actions.find(event->timerId()); action != actions.end())
            action->second();
    }
};

class TimerQueueTest : public testing::Test {
protected:
    void add(int id, int interval = 0) { timers.add(id, interval, Qt::PreciseTimer, &receiver); }

    /// Until the timers with less than the long interval are due.
    void waitUntilDue(int id) {
        while (timers.remainingTime(id) > 0)
            std::this_thread::yield();
    }

    using Ids = std::vector<int>;

    TimerQueue timers;
    Receiver receiver;
};

TEST_F(TimerQueueTest, ThoseThatAreDueComeInTheirOrderAndNoOthers) {
    add(1, 2);
    add(2, longInterval);
    add(3, 1);
    add(4, 0);
    waitUntilDue(1);
    EXPECT_EQ(timers.deliver(), 3);
    EXPECT_EQ(receiver.delivered, (Ids{4, 3, 1}));
}

TEST_F(TimerQueueTest, AnIntervalOf0IsDueOnceInEachCall) {
    add(1);
    add(2);
    EXPECT_EQ(timers.deliver(), 2);
    EXPECT_EQ(timers.deliver(), 2);
    EXPECT_EQ(receiver.delivered, (Ids{1, 2, 1, 2}));
}

TEST_F(TimerQueueTest, BeatsThatWereMissedAreNotCaughtUpWith) {
    add(1, 1);
    add(2, 20);
    waitUntilDue(2);
    const auto now = TimerQueue::Clock::now();
    EXPECT_EQ(timers.deliver(), 2);
    EXPECT_EQ(receiver.delivered, (Ids{1, 2}));
    EXPECT_GT(*timers.next(), now);
}

TEST_F(TimerQueueTest, WhatIsStartedMeanwhileWaitsForTheNextCall) {
    add(1);
    receiver.actions[1] = [this] {
        if (receiver.delivered.size() == 1)
            add(2);
    };
    EXPECT_EQ(timers.deliver(), 1);
    EXPECT_EQ(timers.deliver(), 2);
}

TEST_F(TimerQueueTest, WhatIsEndedMeanwhileIsNotDelivered) {
    add(1);
    add(2);
    add(3);
    receiver.actions[1] = [this] {
        EXPECT_TRUE(timers.remove(2));
        EXPECT_FALSE(timers.remove(2));
    };
    receiver.actions[3] = [this] { EXPECT_TRUE(timers.remove(3)); }; // itself
    EXPECT_EQ(timers.deliver(), 2);
    EXPECT_EQ(receiver.delivered, (Ids{1, 3}));
    receiver.actions.clear();
    EXPECT_EQ(timers.deliver(), 1);
}

TEST_F(TimerQueueTest, AnIdThatIsGivenAgainMeanwhileIsAnotherTimer) {
    add(1);
    add(2);
    receiver.actions[1] = [this] {
        timers.remove(2);
        add(2);
        timers.remove(1);
        add(1);
    };
    EXPECT_EQ(timers.deliver(), 1);
    EXPECT_EQ(receiver.delivered, Ids{1});
}

TEST_F(TimerQueueTest, AReceiverMayGoMeanwhile) {
    auto going = std::make_unique<Receiver>();
    add(1);
    timers.add(2, 0, Qt::CoarseTimer, going.get());
    receiver.actions[1] = [&] {
        EXPECT_TRUE(timers.removeAll(going.get())); // as QObject does
        EXPECT_FALSE(timers.removeAll(going.get()));
        going.reset();
    };
    EXPECT_EQ(timers.deliver(), 1);
}

TEST_F(TimerQueueTest, ATimerIsNotDeliveredWithinItsOwnEventAndTheLoopNeedNotWakeUpForIt) {
    add(1);
    add(2, longInterval);
    receiver.actions[1] = [this] {
        EXPECT_EQ(timers.deliver(), 0);
        ASSERT_TRUE(timers.next());
        EXPECT_GT(*timers.next(), TimerQueue::Clock::now() + std::chrono::milliseconds(longInterval / 2));
        timers.remove(2);
        EXPECT_FALSE(timers.next());
    };
    EXPECT_EQ(timers.deliver(), 1);
    EXPECT_TRUE(timers.next());
    receiver.actions.clear();
    EXPECT_EQ(timers.deliver(), 1);
}

TEST_F(TimerQueueTest, OthersAreDeliveredWithinATimersEventAndNotTwice) {
    add(1);
    add(2, 1);
    waitUntilDue(2);
    receiver.actions[1] = [this] {
        if (receiver.delivered.size() == 1)
            add(3);
        timers.remove(2);
        EXPECT_EQ(timers.deliver(), 1); // the new one
    };
    EXPECT_EQ(timers.deliver(), 1);
    EXPECT_EQ(receiver.delivered, (Ids{1, 3}));
}

TEST_F(TimerQueueTest, TellsTheRemainingTime) {
    EXPECT_EQ(timers.remainingTime(1), -1);
    add(1, longInterval);
    add(2);
    EXPECT_GT(timers.remainingTime(1), longInterval / 2);
    EXPECT_LE(timers.remainingTime(1), longInterval);
    EXPECT_EQ(timers.remainingTime(2), 0);
}

TEST_F(TimerQueueTest, TellsTheTimersOfAReceiver) {
    const Receiver other;
    add(1, longInterval);
    timers.add(2, 5, Qt::VeryCoarseTimer, &receiver);
    const auto of = timers.timersOf(&receiver);
    ASSERT_EQ(of.size(), 2);
    EXPECT_EQ(of[0].timerId, 2);
    EXPECT_EQ(of[0].interval, 5);
    EXPECT_EQ(of[0].timerType, Qt::VeryCoarseTimer);
    EXPECT_EQ(of[1].timerId, 1);
    EXPECT_TRUE(timers.timersOf(const_cast<Receiver*>(&other)).isEmpty());
}

TEST(MillisecondsUntilTest, AreRoundedUpAndFitAnInteger) {
    using TimePoint = TimerQueue::Clock::time_point;
    const TimePoint now = TimerQueue::Clock::now();
    EXPECT_EQ(millisecondsUntil(now), 0);
    EXPECT_EQ(millisecondsUntil(TimePoint::min()), 0);
    EXPECT_EQ(millisecondsUntil(TimePoint::max()), std::numeric_limits<int>::max());
    EXPECT_GT(millisecondsUntil(TimerQueue::Clock::now() + std::chrono::microseconds(999'001)), 0);
    EXPECT_LE(millisecondsUntil(TimerQueue::Clock::now() + std::chrono::microseconds(999'001)), 1000);
}

} // namespace
