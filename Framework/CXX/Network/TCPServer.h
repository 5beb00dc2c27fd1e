#pragma once

#include "Framework/CXX/Network/TCPClient.h"

#include <QByteArray>
#include <QTcpServer>

/// Listens on a port of every interface and gives each connection a TCPClient, which answers messages
/// with the handler. Main thread. A port that can't be had is not reported: nothing is accepted then.
class TCPServer : public QTcpServer {
    Q_OBJECT

public:
    /// Port 0 lets the system choose (see serverPort()). The delimiter is NUL unless another is given.
    TCPServer(quint16 port, QObject* parent, MessageHandler handler);
    TCPServer(quint16 port, QObject* parent, MessageHandler handler, char delimiterByte);
    ~TCPServer() override;

signals:
    /// Reaches every open connection.
    void notificationAvailable(QByteArray notification);

public slots:
    /// Broadcasts: passes the bytes on to every open connection.
    void incomingNotification(QByteArray notification);

protected:
    void incomingConnection(qintptr socketDescriptor) override;

private:
    MessageHandler messageHandler;
    char delimiter;
};
