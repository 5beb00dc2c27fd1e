#include "Services/CameraHubWeb/Hub/TurnQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace CameraHubWeb {
namespace {

using testing::ElementsAre;

/// Of the ticket's first letter, which is the origin.
TakeJob job(const std::string& ticket, std::uint64_t number = 0) {
    return {number, {{}, ticket.substr(0, 1), ticket}, {}, {}, 0};
}

void add(TurnQueue& queue, const std::vector<std::string>& tickets) {
    for (const std::string& ticket : tickets)
        queue.add(job(ticket), 0);
}

std::vector<std::string> orderOf(const TurnQueue& queue) {
    std::vector<std::string> tickets;
    for (const TakeJob* waiting : queue.inOrder())
        tickets.push_back(waiting->request.ticket);
    return tickets;
}

TEST(TurnQueueTest, OneOriginIsServedInItsOrder) {
    TurnQueue queue;
    add(queue, {"a1", "a2", "a3"});
    EXPECT_THAT(orderOf(queue), ElementsAre("a1", "a2", "a3"));
}

TEST(TurnQueueTest, OriginsTakeTurns) {
    TurnQueue queue;
    add(queue, {"a1", "a2", "a3", "b1", "c1", "c2"});
    EXPECT_THAT(orderOf(queue), ElementsAre("a1", "b1", "c1", "a2", "c2", "a3"));
}

TEST(TurnQueueTest, TheOrderIsTheOneInWhichTheyAreTaken) {
    TurnQueue queue;
    add(queue, {"a1", "a2", "b1", "b2", "b3", "c1"});
    std::vector<std::string> expected = orderOf(queue);
    std::vector<std::string> taken;
    while (queue.size() > 0)
        taken.push_back(queue.takeNext().request.ticket);
    EXPECT_EQ(taken, expected);
}

TEST(TurnQueueTest, WhoeverIsServedGoesBehindAllOthersAlsoThoseWhoComeLater) {
    TurnQueue queue;
    add(queue, {"a1", "a2", "a3"});
    EXPECT_EQ(queue.takeNext().request.ticket, "a1");
    add(queue, {"b1", "c1", "b2"});
    EXPECT_THAT(orderOf(queue), ElementsAre("b1", "c1", "a2", "b2", "a3"));
    EXPECT_EQ(queue.takeNext().request.ticket, "b1");
    EXPECT_EQ(queue.takeNext().request.ticket, "c1");
    add(queue, {"c2"});
    EXPECT_THAT(orderOf(queue), ElementsAre("a2", "b2", "c2", "a3"));
}

TEST(TurnQueueTest, AJobIsToldHowManyAreBeforeIt) {
    TurnQueue queue;
    add(queue, {"a1", "a2", "b1"});
    queue.add(job("c1", 7), 1);
    const auto order = queue.inOrder();
    ASSERT_EQ(order.at(2)->number, 7);
    EXPECT_EQ(order.at(2)->placeAtFirst, 3); // a1, b1 and the other one
    EXPECT_EQ(order.at(1)->placeAtFirst, 1);
}

TEST(TurnQueueTest, WhatIsRemovedIsNotServed) {
    TurnQueue queue;
    queue.add(job("a1", 1), 0);
    queue.add(job("a2", 2), 0);
    queue.add(job("b1", 3), 0);
    EXPECT_EQ(queue.remove(2)->request.ticket, "a2");
    EXPECT_FALSE(queue.remove(2));
    EXPECT_FALSE(queue.remove(9));
    EXPECT_THAT(orderOf(queue), ElementsAre("a1", "b1"));
    EXPECT_EQ(queue.remove(1)->request.ticket, "a1");
    EXPECT_THAT(orderOf(queue), ElementsAre("b1"));
    EXPECT_EQ(queue.size(), 1);
}

} // namespace
} // namespace CameraHubWeb
