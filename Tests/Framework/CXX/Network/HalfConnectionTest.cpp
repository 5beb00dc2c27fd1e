#include "Framework/CXX/Network/TCPServer.h"
#include "Tests/Framework/CXX/Network/HttpFixture.h"
#include "Tests/Framework/CXX/Network/PlainPeer.h"

#include <fcntl.h>

#include <cerrno>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace {

/// More than the system takes at once.
const std::string longText(8'000'000, 'x');

bool isOpen(qintptr descriptor) { return fcntl(static_cast<int>(descriptor), F_GETFD) != -1; }

/// Watches the ends of its connections. Answers "long" with the long text, everything else with itself in brackets.
class HalfTCPConnectionTest : public testing::Test {
protected:
    class Server : public TCPServer {
    public:
        explicit Server(const MessageHandler& handler) : TCPServer(0, nullptr, handler), _handler(handler) {}

        std::vector<qintptr> accepted;
        std::vector<qintptr> disconnecting;
        TCPClient* latest = nullptr;

    protected:
        void incomingConnection(qintptr socketDescriptor) override {
            accepted.push_back(socketDescriptor);
            latest = new TCPClient(socketDescriptor, _handler);
            connect(latest, &TCPClient::clientDisconnecting, this,
                    [this](qintptr descriptor) { disconnecting.push_back(descriptor); });
        }

    private:
        MessageHandler _handler;
    };

    /// Until as many connections have ended.
    void waitForEnds(std::size_t count) {
        EXPECT_TRUE(turnUntil([&] { return server.disconnecting.size() == count; }));
        for (const qintptr descriptor : server.disconnecting)
            EXPECT_FALSE(isOpen(descriptor));
    }

    Server server{[](const std::string& message) { return message == "long" ? longText : "[" + message + "]"; }};
    PlainPeer peer{server.serverPort()};
};

TEST_F(HalfTCPConnectionTest, EveryMessageIsAnsweredToAPeerThatHasEndedSending) {
    peer.send("one\0two\0half"s);
    peer.endSending();
    EXPECT_EQ(peer.receiveToTheEnd(), "[one]\r\n\0[two]\r\n\0"s);
    waitForEnds(1);
}

TEST_F(HalfTCPConnectionTest, AReplyIsSentWholeHoweverLongItIs) {
    peer.send("long\0"s);
    peer.endSending();
    EXPECT_TRUE(peer.receiveToTheEnd() == longText + "\r\n\0"s);
    waitForEnds(1);
}

TEST_F(HalfTCPConnectionTest, ANotificationUnderWayIsSentToo) {
    EXPECT_TRUE(turnUntil([&] { return server.latest != nullptr; }));
    QMetaObject::invokeMethod(server.latest, "incomingNotification", Q_ARG(QByteArray, "note"));
    peer.endSending();
    EXPECT_EQ(peer.receiveToTheEnd(), "note\r\n\0"s);
}

TEST_F(HalfTCPConnectionTest, APeerThatIsOwedNothingIsLetGoAtOnce) {
    peer.send("half");
    peer.endSending();
    EXPECT_EQ(peer.receiveToTheEnd(), "");
    waitForEnds(1);
}

TEST_F(HalfTCPConnectionTest, APeerThatHasEndedReceivingIsServedUntilItGoes) {
    peer.endReceiving();
    peer.send("one\0"s);
    turnEventLoop();
    EXPECT_TRUE(server.disconnecting.empty());
    peer.close();
    waitForEnds(1);
}

TEST_F(HalfTCPConnectionTest, APeerThatGoesWithoutItsReplyIsLetGo) {
    for (const bool endsFirst : {false, true}) {
        for (const bool resets : {false, true}) {
            PlainPeer going(server.serverPort());
            going.send("long\0"s);
            if (endsFirst)
                going.endSending();
            EXPECT_TRUE(turnUntil([&] { return !going.received().empty(); }));
            if (resets)
                going.reset();
            else
                going.close();
            waitForEnds(server.accepted.size() - 1); // `peer` stays
        }
    }
    EXPECT_EQ(server.accepted.size(), 5U);
}

TEST_F(HalfTCPConnectionTest, WhatIsWrittenBeforeCloseClientIsSent) {
    peer.send("long\0"s);
    EXPECT_TRUE(turnUntil([&] { return !peer.received().empty(); }));
    server.latest->closeClient();
    EXPECT_TRUE(peer.receiveToTheEnd() == longText + "\r\n\0"s);
    waitForEnds(1);
}

class HalfHttpConnectionTest : public HttpFixture {
protected:
    void SetUp() override {
        route("/long", [](HttpRequest*, HttpResponse* response) { respond(response, longText); });
        route("/silent", [](HttpRequest*, HttpResponse*) {});
        route("/.*", [](HttpRequest* request, HttpResponse* response) { respond(response, request->path); });
    }

    static std::string get(const std::string& path) { return "GET " + path + " HTTP/1.1\r\n\r\n"; }
};

TEST_F(HalfHttpConnectionTest, EveryRequestIsAnsweredToAPeerThatHasEndedSending) {
    PlainPeer peer(server.serverPort());
    peer.send(get("/one") + get("/two") + "GET /half");
    peer.endSending();
    EXPECT_EQ(peer.receiveToTheEnd(), plainResponse("/one") + plainResponse("/two"));
}

TEST_F(HalfHttpConnectionTest, ABodyIsSentWholeHoweverLongItIs) {
    PlainPeer peer(server.serverPort());
    peer.send(get("/long"));
    peer.endSending();
    EXPECT_TRUE(peer.receiveToTheEnd() == plainResponse(longText));
}

TEST_F(HalfHttpConnectionTest, APeerThatIsOwedNothingIsLetGoAtOnce) {
    for (const std::string& sent : {""s, "GET /half"s, "POST / HTTP/1.1\r\nContent-Length: 9\r\n\r\nhalf"s}) {
        PlainPeer peer(server.serverPort());
        peer.send(sent);
        peer.endSending();
        EXPECT_EQ(peer.receiveToTheEnd(), sent.starts_with("POST") ? plainResponse("/") : "");
    }
    PlainPeer unanswered(server.serverPort());
    unanswered.send(get("/silent") + get("/behind"));
    unanswered.endSending();
    EXPECT_EQ(unanswered.receiveToTheEnd(), "");
}

} // namespace
