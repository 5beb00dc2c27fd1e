#include "Framework/CXX/Network/TCPServer.h"

#include "Framework/CXX/Network/Acceptor.h"

#include <QHostAddress>
#include <utility>

TCPServer::TCPServer(quint16 port, QObject* parent, MessageHandler handler)
    : TCPServer(port, parent, std::move(handler), '\0') {}

TCPServer::TCPServer(quint16 port, QObject* parent, MessageHandler handler, char delimiterByte)
    : QTcpServer(parent), messageHandler(std::move(handler)), delimiter(delimiterByte) {
    listen(QHostAddress::Any, port);
    new Acceptor(this, [this](qintptr connection) { incomingConnection(connection); });
}

TCPServer::~TCPServer() = default;

void TCPServer::incomingNotification(QByteArray notification) { emit notificationAvailable(notification); }

void TCPServer::incomingConnection(qintptr socketDescriptor) {
    auto* const client = new TCPClient(socketDescriptor, messageHandler, delimiter);
    // By text, as the slot is the client's own.
    connect(this, SIGNAL(notificationAvailable(QByteArray)), client, SLOT(incomingNotification(QByteArray)));
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the client deletes itself
