#include "Tests/Client/FakeHub.h"

#include <gtest/gtest.h>

using namespace CameraHub;
using Then = ScriptedServer::Then;

namespace {

const std::string imageId(FakeHub::oneId);

TEST(CutReplyTest, AMessageThatTheHubCutsAnywhereIsAnEndedConnection) {
    FakeHub hub;
    const std::string reply = FakeHub::result(R"("2.9")");
    for (std::size_t size = 0; size < reply.size(); ++size) {
        CameraHubClient client = hub.connect();
        hub.messages.answer(reply.substr(0, size), Then::End);
        EXPECT_THROW(client.version(), ConnectionEnded) << size;
        EXPECT_FALSE(client.isConnected());
        EXPECT_THROW(client.version(), NotConnected);
    }
}

TEST(CutReplyTest, AnImageThatTheHubCutsAnywhereIsAnEndedConnection) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    const std::string reply = FakeHub::image(FakeHub::png);
    for (std::size_t size = 0; size < reply.size(); ++size) {
        hub.images.answer(reply.substr(0, size), Then::End);
        EXPECT_THROW(client.fetch(imageId), ConnectionEnded) << size;
    }
    hub.images.answer(reply, Then::End);
    EXPECT_EQ(client.fetch(imageId).size(), FakeHub::png.size());
}

TEST(CutReplyTest, AnImageIsGoneOnceTheHeadSaysSo) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    const std::string reply = FakeHub::noImage();
    for (std::size_t size = 0; size < reply.size(); ++size) {
        hub.images.answer(reply.substr(0, size), Then::End);
        if (size < FakeHub::headOfNoImage.size())
            EXPECT_THROW(client.fetch(imageId), ConnectionEnded) << size;
        else
            EXPECT_THROW(client.fetch(imageId), ImageGone) << size;
    }
}

TEST(CutReplyTest, ABrokenConnectionHasEnded) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    hub.messages.answer(R"({"id":1)", Then::Reset);
    EXPECT_THROW(client.version(), ConnectionEnded);
    hub.images.answer("HTTP/1.1 200 OK\r\n", Then::Reset);
    EXPECT_THROW(client.fetch(imageId), ConnectionEnded);
}

TEST(CutReplyTest, AHubThatGoesBetweenTwoRequestsIsNoticedByTheSecond) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    hub.messages.answer(FakeHub::result(R"("2.9")"), Then::End);
    EXPECT_EQ(client.version(), "2.9");
    EXPECT_THROW(client.version(), ConnectionEnded);
}

// So long that the hub's side refuses the first part while the second is sent: without care, SIGPIPE.
TEST(CutReplyTest, ALongRequestToAHubThatHasGoneRaisesNoSignal) {
    FakeHub hub;
    CameraHubClient client = hub.connect();
    hub.messages.answer(FakeHub::result(R"("2.9")"), Then::End);
    EXPECT_EQ(client.version(), "2.9");
    EXPECT_THROW(client.capture({std::string(32 << 20, 'a')}), ConnectionEnded);
}

} // namespace
