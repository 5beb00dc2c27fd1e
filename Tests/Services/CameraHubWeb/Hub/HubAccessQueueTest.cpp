#include "Services/CameraHubWeb/Hub/HubAccess.h"
#include "Tests/Services/CameraHubWeb/Hub/Taker.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <optional>

namespace CameraHubWeb {
namespace {

using testing::ElementsAre;

std::vector<std::string> ticketsIn(const std::vector<QueueEntry>& queue) {
    std::vector<std::string> tickets;
    for (const QueueEntry& entry : queue)
        tickets.push_back(entry.ticket);
    return tickets;
}

/// One request is at work until the hub is allowed to capture.
class HubAccessQueueTest : public testing::Test {
protected:
    HubAccessQueueTest() : taker(settings()) {
        hub.holdCaptures();
        taker.take("desk", "at work", "a");
        EXPECT_TRUE(taker.waitForStep(TakeStep::Opening));
    }

    HubAccess::Settings settings() const {
        HubAccess::Settings made = settingsFor(hub);
        made.queueLength = 5;
        return made;
    }

    StandInHub hub;
    Taker taker;
};

TEST_F(HubAccessQueueTest, ThoseWhoAskTakeTurns) {
    for (const char* ticket : {"a2", "a3"})
        taker.take("desk", ticket, "a");
    taker.take("door", "b1", "b");
    for (const char* ticket : {"c1", "c2"})
        taker.take("desk", ticket, "c");
    hub.allowCaptures(6);
    EXPECT_TRUE(waitUntil([&] { return taker.order().size() == 6; }));
    EXPECT_THAT(taker.order(), ElementsAre("at work", "b1", "c1", "a2", "c2", "a3"));
    EXPECT_FALSE(hub.hadTwoCapturesAtOnce());
}

TEST_F(HubAccessQueueTest, PlacesFollowTheOrderInWhichRequestsAreServed) {
    taker.take("desk", "a2", "a");
    taker.take("door", "a3", "a");
    taker.take("desk", "b1", "b");
    const auto queue = taker.access().queue();
    EXPECT_THAT(ticketsIn(queue), ElementsAre("at work", "b1", "a2", "a3"));
    for (std::size_t place = 0; place < queue.size(); ++place) {
        EXPECT_EQ(queue[place].place, place);
        EXPECT_EQ(queue[place].step, place == 0 ? TakeStep::Opening : TakeStep::Waiting);
    }
    EXPECT_EQ(queue[3].uid, "door");
    EXPECT_LE(queue[2].since, queue[3].since);
    hub.allowCaptures(4);
    EXPECT_EQ(std::get<TakenStill>(taker.result("a2")).placeAtFirst, 1);
    EXPECT_EQ(std::get<TakenStill>(taker.result("a3")).placeAtFirst, 2);
    EXPECT_EQ(std::get<TakenStill>(taker.result("b1")).placeAtFirst, 1);
}

TEST_F(HubAccessQueueTest, TheTimeInTheQueueIsTold) {
    taker.take("desk", "later", "b");
    const auto since = taker.access().queue().at(1).since;
    EXPECT_TRUE(waitUntil([&] { return std::chrono::steady_clock::now() > since + std::chrono::milliseconds(20); }));
    hub.allowCaptures(2);
    EXPECT_GE(std::get<TakenStill>(taker.result("later")).queueTime, std::chrono::milliseconds(20));
}

TEST_F(HubAccessQueueTest, ARequestThatIsGivenUpIsNeitherServedNorAnswered) {
    const auto second = taker.take("desk", "second", "b");
    taker.take("desk", "third", "c");
    taker.access().giveUp(second);
    EXPECT_THAT(ticketsIn(taker.access().queue()), ElementsAre("at work", "third"));
    hub.allowCaptures(2);
    EXPECT_TRUE(isTaken(taker.result("third")));
    EXPECT_THAT(taker.order(), ElementsAre("at work", "third"));
    EXPECT_EQ(hub.journal().size(), 4);
}

TEST_F(HubAccessQueueTest, ARequestThatHasBegunGoesOnToItsEnd) {
    taker.access().giveUp(1);
    const auto other = taker.take("desk", "other", "b");
    taker.access().giveUp(other - 1);
    EXPECT_THAT(ticketsIn(taker.access().queue()), ElementsAre("at work", "other"));
    hub.allowCaptures(2);
    EXPECT_TRUE(isTaken(taker.result("at work")));
    EXPECT_TRUE(isTaken(taker.result("other")));
}

TEST_F(HubAccessQueueTest, ARequestThatFindsNoRoomIsRefusedAtOnce) {
    for (const char* ticket : {"1", "2", "3", "4", "5"})
        taker.take("desk", ticket);
    const auto refused = taker.take("desk", "6");
    EXPECT_TRUE(taker.hasResult("6"));
    EXPECT_TRUE(isFailure(taker.result("6"), TakeFailureKind::QueueFull));
    taker.access().giveUp(refused);
    EXPECT_EQ(taker.access().queue().size(), 6);
    hub.allowCaptures(1);
    EXPECT_TRUE(isTaken(taker.result("at work")));
    EXPECT_TRUE(waitUntil([&] { return ticketsIn(taker.access().queue()).front() == "1"; }));
    taker.take("desk", "6");
    EXPECT_FALSE(taker.hasResult("6"));
}

TEST_F(HubAccessQueueTest, EveryChangeOfTheQueueIsTold) {
    taker.take("desk", "second", "b");
    EXPECT_TRUE(
        waitUntil([&] { return ticketsIn(taker.lastQueue()) == std::vector<std::string>{"at work", "second"}; }));
    hub.allowCaptures(1);
    EXPECT_TRUE(waitUntil([&] { return ticketsIn(taker.lastQueue()) == std::vector<std::string>{"second"}; }));
    hub.allowCaptures(1);
    EXPECT_TRUE(waitUntil([&] { return taker.lastQueue().empty(); }));
}

TEST_F(HubAccessQueueTest, WhatWaitsAtTheEndIsAnsweredSo) {
    taker.take("desk", "second", "b");
    taker.end();
    EXPECT_TRUE(isFailure(taker.result("at work"), TakeFailureKind::Ended));
    EXPECT_TRUE(isFailure(taker.result("second"), TakeFailureKind::Ended));
}

// A lock that was held would hold up the call, or another thread in it, for good.
TEST(HubAccessCallbackTest, WhoeverIsCalledMayCallEverything) {
    const StandInHub hub;
    std::atomic<HubAccess*> access = nullptr;
    std::atomic<int> taken = 0;
    const auto callAll = [&] {
        HubAccess* const called = access;
        if (called == nullptr)
            return;
        const std::size_t size = called->queue().size();
        const bool isReachable = called->state().isReachable;
        called->giveUp(size > 100 && isReachable ? 1 : 0);
    };
    std::atomic<int> toldOfHub = 0;
    std::atomic<int> toldOfQueue = 0;
    HubAccess made(settingsFor(hub), {[&](const HubState&) { callAll(), ++toldOfHub; },
                                      [&](const std::vector<QueueEntry>&) { callAll(), ++toldOfQueue; }});
    access = &made;
    const std::function<void(TakeResult)> takeMore = [&](const TakeResult& result) {
        EXPECT_TRUE(isTaken(result));
        callAll();
        if (++taken < 20)
            made.take({{"desk"}, "", ""}, takeMore);
    };
    made.take({{"desk"}, "", ""}, takeMore);
    EXPECT_TRUE(waitUntil([&] { return taken == 20 && toldOfHub == 1 && toldOfQueue > 0 && made.queue().empty(); }));
}

// It does not end for as long as it is asked.
TEST(HubAccessCallbackTest, WhatIsAskedForAtTheEndIsAnsweredBeforeTheCallReturns) {
    StandInHub hub;
    hub.holdCaptures();
    auto access = std::make_unique<HubAccess>(settingsFor(hub), HubAccess::Observer{});
    std::optional<TakeResult> another;
    access->take({{"desk"}, "", ""}, [&another, &called = *access](const TakeResult& result) {
        EXPECT_TRUE(isFailure(result, TakeFailureKind::Ended));
        called.take({{"desk"}, "", ""}, [&another](TakeResult second) { another = std::move(second); });
        EXPECT_TRUE(another);
    });
    access.reset();
    ASSERT_TRUE(another);
    EXPECT_TRUE(isFailure(*another, TakeFailureKind::Ended));
}

} // namespace
} // namespace CameraHubWeb
