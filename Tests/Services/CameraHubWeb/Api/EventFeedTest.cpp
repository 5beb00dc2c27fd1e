#include "Services/CameraHubWeb/Api/EventFeed.h"

#include <gtest/gtest.h>

#include <string>

namespace CameraHubWeb {
namespace {

using Subject = EventFeed::Subject;

/// What comes of one next(), once it has come.
struct Piece {
    void ask(BodyStream& stream) {
        stream.next([this](SharedBytes bytes) {
            isThere = true;
            text = bytes ? std::string(bytes->begin(), bytes->end()) : "end";
        });
    }

    bool isThere = false;
    std::string text;
};

std::string nextText(BodyStream& stream) {
    Piece piece;
    piece.ask(stream);
    EXPECT_TRUE(piece.isThere);
    return piece.text;
}

TEST(EventFeedTest, WhoBeginsToListenIsToldTheStatesFirst) {
    EventFeed feed;
    feed.set(Subject::Cameras, "[1]");
    feed.set(Subject::Hub, "{}");
    const auto listener = feed.subscribe();
    EXPECT_EQ(nextText(*listener), "id: 2\nevent: hub\ndata: {}\n\nid: 2\nevent: cameras\ndata: [1]\n\n");
}

TEST(EventFeedTest, WhoWaitsIsToldAtOnce) {
    EventFeed feed;
    const auto listener = feed.subscribe();
    Piece piece;
    piece.ask(*listener);
    EXPECT_FALSE(piece.isThere);
    feed.set(Subject::Queue, "[]");
    EXPECT_EQ(piece.text, "id: 1\nevent: queue\ndata: []\n\n");
}

TEST(EventFeedTest, AStateThatIsWhatItWasIsNotTold) {
    EventFeed feed;
    const auto listener = feed.subscribe();
    feed.set(Subject::Hub, "{}");
    nextText(*listener);
    Piece piece;
    piece.ask(*listener);
    feed.set(Subject::Hub, "{}");
    EXPECT_FALSE(piece.isThere);
}

TEST(EventFeedTest, WhoIsSlowGetsTheLatestOfEachStateAndEveryStill) {
    EventFeed feed;
    const auto listener = feed.subscribe();
    feed.set(Subject::Hub, "1");
    feed.tellStill("a");
    feed.set(Subject::Hub, "2");
    feed.tellStill("b");
    EXPECT_EQ(nextText(*listener), "id: 3\nevent: hub\ndata: 2\n\n"
                                   "id: 2\nevent: still\ndata: a\n\n"
                                   "id: 4\nevent: still\ndata: b\n\n");
}

TEST(EventFeedTest, WhoNeverReadsCostsSixtyFourStills) {
    EventFeed feed;
    const auto listener = feed.subscribe();
    for (int i = 1; i <= 100; ++i)
        feed.tellStill(std::to_string(i));
    const std::string text = nextText(*listener);
    EXPECT_EQ(text.find("data: 36\n"), std::string::npos);
    EXPECT_EQ(text.rfind("id: 37\nevent: still\ndata: 37\n", 0), 0U);
    EXPECT_NE(text.find("data: 100\n"), std::string::npos);
}

TEST(EventFeedTest, ASignOfLifeComesWhereNothingElseDoes) {
    EventFeed feed;
    const auto listener = feed.subscribe();
    feed.tellAlive();
    EXPECT_EQ(nextText(*listener), ": alive\n\n");
    feed.tellAlive();
    feed.set(Subject::Hub, "{}");
    EXPECT_EQ(nextText(*listener), "id: 1\nevent: hub\ndata: {}\n\n");
}

TEST(EventFeedTest, WhoHasGoneIsNotCountedAndNotCalled) {
    EventFeed feed;
    const auto listener = feed.subscribe();
    const auto other = feed.subscribe();
    Piece piece;
    piece.ask(*listener);
    EXPECT_EQ(feed.listeners(), 2U);
    listener->ended();
    EXPECT_EQ(feed.listeners(), 1U);
    feed.set(Subject::Hub, "{}");
    EXPECT_FALSE(piece.isThere);
}

} // namespace
} // namespace CameraHubWeb
