#include "Framework/CXX/Network/TCPServer.h"

#include "Tests/Framework/CXX/Network/TestConnection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QMetaMethod>
#include <memory>
#include <string>
#include <vector>

using namespace std::string_literals;
using testing::ElementsAre;

namespace {

std::string echo(std::string message) { return message; }

std::vector<std::string> ownMethods(const QMetaObject& meta) {
    std::vector<std::string> found;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        static const char* const kinds[] = {"method", "signal", "slot", "constructor"};
        static const char* const accesses[] = {"private", "protected", "public"};
        found.push_back(kinds[method.methodType()] + " "s + accesses[method.access()] + " " +
                        method.methodSignature().toStdString());
    }
    return found;
}

TEST(TCPServerTest, MetaDataListsOneSignalAndOneSlot) {
    EXPECT_STREQ(TCPServer::staticMetaObject.className(), "TCPServer");
    EXPECT_THAT(ownMethods(TCPServer::staticMetaObject), ElementsAre("signal public notificationAvailable(QByteArray)",
                                                                     "slot public incomingNotification(QByteArray)"));
}

TEST(TCPClientTest, MetaDataListsOneSignalAndThreePrivateSlots) {
    EXPECT_STREQ(TCPClient::staticMetaObject.className(), "TCPClient");
    EXPECT_THAT(ownMethods(TCPClient::staticMetaObject),
                ElementsAre("signal public clientDisconnecting(qintptr)", "slot private readClient()",
                            "slot private discardClient()", "slot private incomingNotification(QByteArray)"));
}

TEST(TCPServerTest, ListensOnEveryInterface) {
    const TCPServer server(0, nullptr, echo);
    EXPECT_TRUE(server.isListening());
    EXPECT_EQ(server.serverAddress(), QHostAddress(QHostAddress::Any));
}

TEST(TCPServerTest, BelongsToItsParent) {
    QObject parent;
    const auto* const server = new TCPServer(0, &parent, echo);
    EXPECT_EQ(server->parent(), &parent);
}

TEST(TCPServerTest, ATakenPortIsNotReported) {
    const TCPServer first(0, nullptr, echo);
    const TCPServer second(first.serverPort(), nullptr, echo);
    EXPECT_FALSE(second.isListening());
}

TEST(TCPServerTest, NotificationReachesEveryConnectionWithTheReplyTrailer) {
    TCPServer server(0, nullptr, echo);
    TestConnection one(server.serverPort());
    TestConnection two(server.serverPort());
    one.send("a\0"s);
    two.send("b\0"s);
    one.receiveUntil("\r\n\0"s);
    two.receiveUntil("\r\n\0"s);

    server.incomingNotification(QByteArray("note\0bytes", 10));
    one.send("c\0"s);
    EXPECT_EQ(one.receiveUntil("c\r\n\0"s), "a\r\n\0note\0bytes\r\n\0c\r\n\0"s);
    EXPECT_EQ(two.receive(17), "b\r\n\0note\0bytes\r\n\0"s);
}

TEST(TCPServerTest, NotificationWithoutConnectionsGoesNowhere) {
    TCPServer server(0, nullptr, echo);
    server.incomingNotification("nobody");
    TestConnection late(server.serverPort());
    late.send("x\0"s);
    EXPECT_EQ(late.receiveUntil("\r\n\0"s), "x\r\n\0"s);
}

TEST(TCPServerTest, AConnectionThatHasGoneMissesTheNotification) {
    TCPServer server(0, nullptr, echo);
    auto gone = std::make_unique<TestConnection>(server.serverPort());
    TestConnection staying(server.serverPort());
    gone->send("x\0"s);
    gone->receiveUntil("\r\n\0"s);
    gone.reset();
    staying.send("x\0"s);
    staying.receiveUntil("\r\n\0"s);
    server.incomingNotification("note");
    EXPECT_EQ(staying.receiveUntil("note\r\n\0"s), "x\r\n\0note\r\n\0"s);
}

TEST(TCPServerTest, ConnectionsOutliveTheServer) {
    auto server = std::make_unique<TCPServer>(0, nullptr, echo);
    TestConnection connection(server->serverPort());
    connection.send("before\0"s);
    connection.receiveUntil("\r\n\0"s);
    server.reset();
    connection.send("behind\0"s);
    EXPECT_EQ(connection.receiveUntil("behind\r\n\0"s), "before\r\n\0behind\r\n\0"s);
}

} // namespace
