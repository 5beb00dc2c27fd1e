#include "Framework/CXX/Network/AcceptedSocket.h"

#include "Tests/Framework/CXX/Network/CountedCalls.h"
#include "Tests/Framework/CXX/Network/PlainPeer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <QTcpServer>
#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace {

/// A server that keeps the descriptor of its one connection.
class OneConnection : public QTcpServer {
public:
    OneConnection() { listen(QHostAddress::LocalHost); }

    int descriptor = -1;

protected:
    void incomingConnection(qintptr connection) override { descriptor = static_cast<int>(connection); }
};

class AcceptedSocketTest : public testing::Test {
protected:
    AcceptedSocketTest() {
        EXPECT_TRUE(turnUntil([&] { return server.descriptor >= 0; }));
        EXPECT_TRUE(
            socket.setSocketDescriptor(server.descriptor, QAbstractSocket::ConnectedState, QIODevice::ReadWrite));
        QObject::connect(&socket, &QTcpSocket::readyRead, &socket, [this] { serve(socket.readAll().toStdString()); });
    }

    OneConnection server;
    PlainPeer peer{server.serverPort()};
    AcceptedSocket socket{nullptr};
    std::function<void(const std::string&)> serve = [](const std::string&) {};
};

using Counts = std::map<std::string, int>;

TEST_F(AcceptedSocketTest, TheEndOfAReplyIsNotHeldBackUntilItsBeginningIsAcknowledged) {
    int isSentAtOnce = 0;
    socklen_t size = sizeof isSentAtOnce;
    ASSERT_EQ(getsockopt(server.descriptor, IPPROTO_TCP, TCP_NODELAY, &isSentAtOnce, &size), 0);
    EXPECT_NE(isSentAtOnce, 0);
}

TEST_F(AcceptedSocketTest, ARequestIsReadByOneSystemCallAndItsReplyWrittenByAnother) {
    serve = [this](const std::string& request) {
        socket.write(request.c_str());
        socket.write(", and its end");
    };
    const CountedCalls calls(server.descriptor);
    peer.send("request");
    EXPECT_TRUE(turnUntil([&] { return peer.received() == "request, and its end"; }));
    EXPECT_EQ(calls.counts(), (Counts{{"recv", 1}, {"sendmsg", 1}}));
}

TEST_F(AcceptedSocketTest, NothingIsSentBeforeARequestHasBeenServed) {
    std::string receivedWithin;
    serve = [&](const std::string&) {
        socket.write("reply");
        receivedWithin = peer.received();
    };
    peer.send("request");
    EXPECT_TRUE(turnUntil([&] { return peer.received() == "reply"; }));
    EXPECT_EQ(receivedWithin, "");
}

TEST_F(AcceptedSocketTest, WhatIsWrittenBetweenRequestsIsSentWhenTheEventLoopRuns) {
    socket.write("unasked");
    socket.write(", and more");
    EXPECT_EQ(socket.bytesToWrite(), 17);
    EXPECT_TRUE(turnUntil([&] { return peer.received() == "unasked, and more"; }));
    EXPECT_EQ(socket.bytesToWrite(), 0);
}

TEST_F(AcceptedSocketTest, WhatTheSystemDoesNotTakeIsSentWhenItDoesWithoutAskingItInBetween) {
    const std::string longReply(8'000'000, 'x');
    serve = [&](const std::string&) { socket.write(longReply.c_str()); };
    const CountedCalls calls(server.descriptor);
    peer.send("request");
    EXPECT_TRUE(turnUntil([&] { return calls.counts().contains("sendmsg"); }));
    settleEventLoop();
    const int sent = calls.counts().at("sendmsg");
    serve = [&](const std::string&) { socket.write("end"); };
    constexpr int requests = 20;
    for (int i = 0; i < requests; ++i) {
        peer.send("request");
        settleEventLoop();
    }
    // The system may find some more room by itself, when the peer lets it hear of itself for the first time.
    EXPECT_LT(calls.counts().at("sendmsg") - sent, requests / 4);
    std::string ends;
    for (int i = 0; i < requests; ++i)
        ends += "end";
    EXPECT_TRUE(turnUntil([&] { return peer.received().size() == longReply.size() + ends.size(); }));
    EXPECT_TRUE(peer.received() == longReply + ends);
}

/// More than the system takes at once.
SharedBytes manyBytes() { return std::make_shared<const std::vector<unsigned char>>(8'000'000, 'x'); }

TEST_F(AcceptedSocketTest, SharedBytesAreHeldUntilTheyHaveGone) {
    const SharedBytes bytes = manyBytes();
    serve = [&](const std::string&) {
        socket.write("head");
        socket.writeShared(bytes);
        socket.write("end");
    };
    peer.send("request");
    EXPECT_TRUE(turnUntil([&] { return !peer.received().empty(); }));
    EXPECT_EQ(bytes.use_count(), 2);
    EXPECT_TRUE(turnUntil([&] { return peer.received().ends_with("end"); }));
    EXPECT_TRUE(peer.received() == "head" + std::string(bytes->begin(), bytes->end()) + "end");
    EXPECT_EQ(bytes.use_count(), 1);
}

TEST_F(AcceptedSocketTest, SharedBytesMayBeWrittenBetweenRequests) {
    const SharedBytes bytes = manyBytes();
    socket.writeShared(bytes);
    EXPECT_TRUE(turnUntil([&] { return peer.received().size() == bytes->size(); }));
    EXPECT_EQ(bytes.use_count(), 1);
}

TEST_F(AcceptedSocketTest, SharedBytesAreLetGoOfWithTheConnection) {
    const SharedBytes bytes = manyBytes();
    bool isHeldAtTheEnd = true;
    QObject::connect(&socket, &QTcpSocket::disconnected, &socket, [&] { isHeldAtTheEnd = bytes.use_count() > 1; });
    socket.writeShared(bytes);
    EXPECT_TRUE(turnUntil([&] { return !peer.received().empty(); }));
    peer.reset();
    EXPECT_TRUE(turnUntil([&] { return socket.state() == QAbstractSocket::UnconnectedState; }));
    EXPECT_FALSE(isHeldAtTheEnd);
    socket.writeShared(bytes);
    EXPECT_EQ(bytes.use_count(), 1);
}

TEST_F(AcceptedSocketTest, SendsOnlyAPartInEachTurnToAPeerThatTakesAll) {
    const SharedBytes bytes = manyBytes();
    std::size_t mostAtOnce = 0;
    serve = [&](const std::string&) { socket.writeShared(bytes); };
    peer.send("request");
    for (std::size_t before = 0; before < bytes->size(); before = peer.received().size()) {
        turnEventLoop();
        mostAtOnce = std::max(mostAtOnce, peer.received().size() - before);
    }
    EXPECT_LE(mostAtOnce, 262144U);
}

TEST_F(AcceptedSocketTest, HasWhatIsLeftOfALongRequestInTheNextTurns) {
    const std::string longRequest(1'000'000, 'x');
    std::string received;
    std::size_t mostAtOnce = 0;
    serve = [&](const std::string& bytes) {
        received += bytes;
        mostAtOnce = std::max(mostAtOnce, bytes.size());
    };
    peer.send(longRequest);
    EXPECT_TRUE(turnUntil([&] { return received.size() == longRequest.size(); }));
    EXPECT_EQ(mostAtOnce, 16384U);
}

} // namespace
