#include "Framework/CXX/Network/AcceptedSocket.h"

#include "Tests/Framework/CXX/Network/PlainPeer.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <QTcpServer>

namespace {

/// A server that keeps the descriptor of its one connection.
class OneConnection : public QTcpServer {
public:
    OneConnection() { listen(QHostAddress::LocalHost); }

    int descriptor = -1;

protected:
    void incomingConnection(qintptr connection) override { descriptor = static_cast<int>(connection); }
};

TEST(AcceptedSocketTest, TheEndOfAReplyIsNotHeldBackUntilItsBeginningIsAcknowledged) {
    OneConnection server;
    const PlainPeer peer(server.serverPort());
    ASSERT_TRUE(turnUntil([&] { return server.descriptor >= 0; }));
    AcceptedSocket socket(nullptr);
    ASSERT_TRUE(socket.setSocketDescriptor(server.descriptor, QAbstractSocket::ConnectedState, QIODevice::ReadWrite));
    int isSentAtOnce = 0;
    socklen_t size = sizeof isSentAtOnce;
    ASSERT_EQ(getsockopt(server.descriptor, IPPROTO_TCP, TCP_NODELAY, &isSentAtOnce, &size), 0);
    EXPECT_NE(isSentAtOnce, 0);
}

} // namespace
