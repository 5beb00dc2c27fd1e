#pragma once

#include <QByteArray>
#include <QObject>
#include <QTcpSocket>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// A message in, its reply out.
using MessageHandler = std::function<std::string(std::string)>;

/// One accepted connection: cuts the bytes into messages at a delimiter, has each answered before it looks
/// at the next byte, and ends every reply in CR LF NUL. Has no parent: it deletes itself when its socket
/// disconnects. Main thread. Whatever the handler throws leaves the event loop.
class TCPClient : public QObject {
    Q_OBJECT

public:
    /// Takes the descriptor over. The delimiter is NUL unless another is given.
    TCPClient(qintptr descriptor, MessageHandler handler);
    TCPClient(qintptr descriptor, MessageHandler handler, char delimiterByte);
    ~TCPClient() override;

    /// Closes the socket; bytes that still come are dropped.
    void closeClient();

signals:
    /// The connection is about to go; the argument is the descriptor that was accepted.
    void clientDisconnecting(qintptr);

private slots:
    void readClient();
    void discardClient();
    void incomingNotification(QByteArray notification);

protected:
    const qintptr socketDescriptor; ///< as accepted; stays readable after the socket has closed

private:
    enum ClientState { ClosedByUs = 0, Working = 1 };

    void takeBytes(std::string_view bytes);
    void answerMessage();

    QTcpSocket* socket;
    int clientState;
    MessageHandler messageHandler;
    std::vector<char> buffer; ///< the message in progress, of any size
    char delimiter;
    [[maybe_unused]] int clientId; ///< serial number, 2 for the process's first connection
};
