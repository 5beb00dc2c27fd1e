#include "Framework/CXX/Network/HttpServer.h"
#include "Framework/CXX/Network/TCPServer.h"
#include "Tests/Framework/CXX/Network/PlainPeer.h"

#include <fcntl.h>
#include <sys/resource.h>

#include <memory>
#include <string>
#include <vector>

using namespace std::string_literals;

namespace {

int lowestFreeDescriptor() {
    const int lowest = fcntl(0, F_DUPFD_CLOEXEC, 0);
    ::close(lowest);
    return lowest;
}

/// Lets the process have no descriptor for connections beyond those that it has now, for a scope.
class NoFreeDescriptor {
public:
    enum class Left { Nothing, Reserve };

    explicit NoFreeDescriptor(Left left) {
        getrlimit(RLIMIT_NOFILE, &_before);
        const auto used = static_cast<rlim_t>(lowestFreeDescriptor());
        // The reserve is a quarter of all, as long as these are not many.
        const rlimit all{left == Left::Nothing ? used : used * 4 / 3, _before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &all);
    }
    ~NoFreeDescriptor() { setrlimit(RLIMIT_NOFILE, &_before); }
    NoFreeDescriptor(const NoFreeDescriptor&) = delete;
    NoFreeDescriptor& operator=(const NoFreeDescriptor&) = delete;

private:
    rlimit _before{};
};

/// Whether the event loop comes to rest, as it doesn't where something is ready without end.
bool comesToRest() {
    constexpr int mostTurns = 1000;
    for (int turn = 0; turn < mostTurns; ++turn)
        if (!QEventLoop().processEvents(QEventLoop::AllEvents))
            return true;
    return false;
}

class AcceptorTest : public testing::Test {
protected:
    AcceptorTest() {
        QObject::connect(&server, &QTcpServer::acceptError, &server,
                         [this](QAbstractSocket::SocketError error) { errors.push_back(error); });
    }

    /// Sanitizers take a descriptor to look at a type for the first time: all is called once while some are left.
    void SetUp() override {
        auto peer = std::make_unique<PlainPeer>(server.serverPort());
        peer->send("peer\0"s);
        {
            const NoFreeDescriptor limit(NoFreeDescriptor::Left::Reserve);
            EXPECT_TRUE(turnUntil([&] { return !errors.empty(); }));
        }
        EXPECT_TRUE(turnUntil([&] { return peer->received() == "peer\r\n\0"s; }));
        peer.reset();
        settleEventLoop(); // the server's end is closed, too
        errors.clear();
    }

    std::vector<QAbstractSocket::SocketError> errors;
    TCPServer server{0, nullptr, [](const std::string& message) { return message; }};
};

TEST_F(AcceptorTest, WaitsWhereNoDescriptorIsLeftAndSaysItOnce) {
    for (const auto left : {NoFreeDescriptor::Left::Nothing, NoFreeDescriptor::Left::Reserve}) {
        settleEventLoop();
        errors.clear();
        PlainPeer early(server.serverPort());
        early.send("early\0"s);
        EXPECT_TRUE(turnUntil([&] { return early.received() == "early\r\n\0"s; }));
        PlainPeer one(server.serverPort());
        PlainPeer two(server.serverPort());
        one.send("one\0"s);
        two.send("two\0"s);

        const NoFreeDescriptor limit(left);
        EXPECT_TRUE(comesToRest());
        EXPECT_TRUE(turnUntil([&] { return !errors.empty(); }));
        early.send("again\0"s);
        EXPECT_TRUE(turnUntil([&] { return early.received() == "early\r\n\0again\r\n\0"s; }));
        EXPECT_EQ(one.received(), "");

        early.close();
        EXPECT_TRUE(turnUntil([&] { return one.received() == "one\r\n\0"s; }));
        one.close();
        EXPECT_TRUE(turnUntil([&] { return two.received() == "two\r\n\0"s; }));
        EXPECT_EQ(errors, std::vector{QAbstractSocket::SocketResourceError});
    }
}

TEST_F(AcceptorTest, LeavesDescriptorsToTheRestOfTheProcess) {
    const PlainPeer peer(server.serverPort());
    const NoFreeDescriptor limit(NoFreeDescriptor::Left::Reserve);
    EXPECT_TRUE(turnUntil([&] { return !errors.empty(); }));
    EXPECT_NE(lowestFreeDescriptor(), -1);
}

TEST_F(AcceptorTest, GoesOnWhereADescriptorBecomesFreeWithoutAConnectionsEnd) {
    PlainPeer peer(server.serverPort());
    peer.send("peer\0"s);
    {
        const NoFreeDescriptor limit(NoFreeDescriptor::Left::Nothing);
        EXPECT_TRUE(turnUntil([&] { return !errors.empty(); }));
    }
    EXPECT_TRUE(turnUntil([&] { return peer.received() == "peer\r\n\0"s; }));

    const PlainPeer next(server.serverPort());
    const NoFreeDescriptor limit(NoFreeDescriptor::Left::Nothing);
    EXPECT_TRUE(turnUntil([&] { return errors.size() == 2; })); // said again for another time
}

TEST(AcceptorOfBothServersTest, LetsABurstOfConnectionsWait) {
    constexpr int burst = 120; // less than any system's limit of the queue, more than Qt's 50
    const TCPServer tcp(0, nullptr, [](const std::string& message) { return message; });
    const HttpServer http(0, nullptr);
    for (const quint16 port : {tcp.serverPort(), http.serverPort()}) {
        std::vector<std::unique_ptr<PlainPeer>> peers;
        int connected = 0;
        for (int i = 0; i < burst; ++i) {
            peers.push_back(std::make_unique<PlainPeer>(port));
            connected += peers.back()->isConnected() ? 1 : 0;
        }
        EXPECT_EQ(connected, burst);
        settleEventLoop();
        peers.clear();
        settleEventLoop();
    }
}

} // namespace
