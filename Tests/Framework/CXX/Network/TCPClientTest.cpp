#include "Framework/CXX/Network/TCPClient.h"

#include "Framework/CXX/Network/TCPServer.h"
#include "Tests/Framework/CXX/Network/TestConnection.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

using namespace std::string_literals;
using testing::ElementsAre;

namespace {

/// Keeps what it is asked and answers in brackets.
struct Recorder {
    std::vector<std::string> messages;

    MessageHandler handler() {
        return [this](std::string message) {
            messages.push_back(message);
            return "[" + message + "]";
        };
    }
};

/// Makes its connections itself, to watch them.
class WatchingServer : public TCPServer {
public:
    explicit WatchingServer(MessageHandler handler) : TCPServer(0, nullptr, handler), _handler(handler) {}

    std::vector<qintptr> accepted;
    std::vector<qintptr> disconnecting;
    TCPClient* latestClient = nullptr;
    int destroyed = 0;

protected:
    void incomingConnection(qintptr socketDescriptor) override {
        accepted.push_back(socketDescriptor);
        latestClient = new TCPClient(socketDescriptor, _handler);
        connect(latestClient, &TCPClient::clientDisconnecting, this,
                [this](qintptr descriptor) { disconnecting.push_back(descriptor); });
        connect(latestClient, &QObject::destroyed, this, [this] { ++destroyed; });
    }

private:
    MessageHandler _handler;
};

TEST(TCPClientTest, DelimiterFirstCallsTheHandlerWithTheEmptyString) {
    Recorder recorder;
    TCPServer server(0, nullptr, recorder.handler());
    TestConnection connection(server.serverPort());
    connection.send("\0"s);
    EXPECT_EQ(connection.receiveUntil("\r\n\0"s), "[]\r\n\0"s);
    EXPECT_THAT(recorder.messages, ElementsAre(""));
}

TEST(TCPClientTest, TwoDelimitersInOneReadGiveTwoRepliesInOrder) {
    Recorder recorder;
    TCPServer server(0, nullptr, recorder.handler());
    TestConnection connection(server.serverPort());
    connection.send("first\0second\0"s);
    EXPECT_EQ(connection.receive(20), "[first]\r\n\0[second]\r\n\0"s);
    EXPECT_THAT(recorder.messages, ElementsAre("first", "second"));
}

TEST(TCPClientTest, MessageSplitAcrossManyReadsIsHandledOnce) {
    Recorder recorder;
    TCPServer server(0, nullptr, recorder.handler());
    TestConnection connection(server.serverPort());
    for (const char byte : "split\0"s) {
        EXPECT_THAT(recorder.messages, ElementsAre());
        connection.send(std::string(1, byte));
        turnEventLoop();
    }
    EXPECT_EQ(connection.receiveUntil("\r\n\0"s), "[split]\r\n\0"s);
    EXPECT_THAT(recorder.messages, ElementsAre("split"));
}

TEST(TCPClientTest, ReplyIsCutAtItsFirstNulAndTheTrailerStillFollows) {
    TCPServer server(0, nullptr, [](const std::string&) { return "before\0behind"s; });
    TestConnection connection(server.serverPort());
    connection.send("x\0x\0"s);
    EXPECT_EQ(connection.receive(18), "before\r\n\0before\r\n\0"s);
}

TEST(TCPClientTest, EmptyReplyIsTheTrailerAlone) {
    TCPServer server(0, nullptr, [](const std::string&) { return ""s; });
    TestConnection connection(server.serverPort());
    connection.send("x\0"s);
    EXPECT_EQ(connection.receive(3), "\r\n\0"s);
}

TEST(TCPClientTest, AnotherDelimiterDoesNotChangeTheEndOfAReply) {
    Recorder recorder;
    TCPServer server(0, nullptr, recorder.handler(), '\n');
    TestConnection connection(server.serverPort());
    connection.send("a\0b\r\n"s);
    EXPECT_EQ(connection.receive(5), "[a\r\n\0"s); // the reply "[a NUL b CR]" ends at its NUL
    EXPECT_THAT(recorder.messages, ElementsAre("a\0b\r"s));
}

TEST(TCPClientTest, BytesBehindTheLastDelimiterAreLostWithTheConnection) {
    Recorder recorder;
    WatchingServer server(recorder.handler());
    {
        TestConnection connection(server.serverPort());
        connection.send("whole\0half"s);
        connection.receiveUntil("\r\n\0"s);
        connection.close();
        EXPECT_TRUE(turnUntil([&] { return server.destroyed == 1; }));
    }
    TestConnection next(server.serverPort());
    next.send("rest\0"s);
    next.receiveUntil("\r\n\0"s);
    EXPECT_THAT(recorder.messages, ElementsAre("whole", "rest"));
}

TEST(TCPClientTest, LongMessagesAreTakenWhole) {
    Recorder recorder;
    TCPServer server(0, nullptr, recorder.handler());
    TestConnection connection(server.serverPort());
    const std::string message(3000000, 'm');
    connection.send(message + '\0');
    EXPECT_EQ(connection.receive(message.size() + 5), "[" + message + "]\r\n\0"s);
}

TEST(TCPClientTest, ConnectionsDoNotShareTheirBuffers) {
    Recorder recorder;
    TCPServer server(0, nullptr, recorder.handler());
    TestConnection one(server.serverPort());
    TestConnection two(server.serverPort());
    one.send("on");
    two.send("two\0"s);
    EXPECT_EQ(two.receiveUntil("\r\n\0"s), "[two]\r\n\0"s);
    one.send("e\0"s);
    EXPECT_EQ(one.receiveUntil("\r\n\0"s), "[one]\r\n\0"s);
}

TEST(TCPClientTest, ManyMessagesAreHandledOneAtATimeInOrder) {
    std::vector<std::string> messages;
    int running = 0;
    TCPServer server(0, nullptr, [&](const std::string& message) {
        EXPECT_EQ(++running, 1);
        messages.push_back(message);
        --running;
        return message;
    });
    TestConnection connection(server.serverPort());
    std::vector<std::string> sent;
    std::string replies;
    for (int i = 0; i < 100; ++i) {
        sent.push_back(std::to_string(i));
        replies += sent.back() + "\r\n\0"s;
        connection.send(sent.back() + '\0');
    }
    EXPECT_EQ(connection.receive(replies.size()), replies);
    EXPECT_EQ(messages, sent);
}

TEST(TCPClientTest, TellsTheAcceptedDescriptorWhenItDisconnectsAndDeletesItself) {
    Recorder recorder;
    WatchingServer server(recorder.handler());
    TestConnection connection(server.serverPort());
    ASSERT_TRUE(turnUntil([&] { return server.accepted.size() == 1; }));
    ASSERT_GE(server.accepted.front(), 0);
    EXPECT_EQ(server.latestClient->parent(), nullptr);
    connection.close();
    ASSERT_TRUE(turnUntil([&] { return server.destroyed == 1; }));
    EXPECT_EQ(server.disconnecting, server.accepted);
    errno = 0;
    EXPECT_EQ(fcntl(static_cast<int>(server.accepted.front()), F_GETFD), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST(TCPClientTest, AResetIsADisconnection) {
    Recorder recorder;
    WatchingServer server(recorder.handler());
    TestConnection connection(server.serverPort());
    connection.send("unfinished");
    ASSERT_TRUE(turnUntil([&] { return server.accepted.size() == 1; }));
    connection.abort();
    EXPECT_TRUE(turnUntil([&] { return server.destroyed == 1; }));
    EXPECT_EQ(server.disconnecting, server.accepted);
    EXPECT_THAT(recorder.messages, ElementsAre());
}

TEST(TCPClientTest, CloseClientEndsTheConnection) {
    Recorder recorder;
    WatchingServer server(recorder.handler());
    TestConnection connection(server.serverPort());
    ASSERT_TRUE(turnUntil([&] { return server.latestClient != nullptr; }));
    server.latestClient->closeClient();
    EXPECT_TRUE(turnUntil([&] { return !connection.isConnected() && server.destroyed == 1; }));
    EXPECT_EQ(server.disconnecting, server.accepted);
}

TEST(TCPClientTest, BytesAreDroppedAfterCloseClient) {
    WatchingServer* running = nullptr;
    std::vector<std::string> messages;
    WatchingServer server([&](std::string message) {
        messages.push_back(message);
        running->latestClient->closeClient();
        return std::string();
    });
    running = &server;
    TestConnection connection(server.serverPort());
    connection.send("first\0second\0third"s);
    EXPECT_TRUE(turnUntil([&] { return server.destroyed == 1; }));
    EXPECT_THAT(messages, ElementsAre("first"));
}

} // namespace
