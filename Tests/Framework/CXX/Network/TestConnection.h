#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QEventLoop>
#include <QHostAddress>
#include <QTcpSocket>
#include <QTimer>
#include <functional>
#include <string>
#include <string_view>

/// One turn of the event loop, with the deletions that it leaves to a loop of its own.
inline void turnEventLoop() {
    static constexpr int longestWaitInMs = 10;
    QTimer wakeUp;
    wakeUp.start(longestWaitInMs);
    QEventLoop().processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// Runs the event loop until nothing is left to do. The end of a connection of this process is seen at
/// once on its other side, so that the objects of all that have ended are gone afterwards.
inline void settleEventLoop() {
    while (QEventLoop().processEvents(QEventLoop::AllEvents)) {
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

/// Runs the event loop until the condition holds. False if it doesn't within the limit.
inline bool turnUntil(const std::function<bool()>& condition, int limitInMs = 60000) {
    const QDeadlineTimer deadline(limitInMs);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        turnEventLoop();
    }
    return true;
}

/// A client's end of a connection to a server of the same process, on the same event loop.
class TestConnection {
public:
    explicit TestConnection(quint16 port) {
        QObject::connect(&_socket, &QTcpSocket::readyRead, &_socket,
                         [this] { _received += _socket.readAll().toStdString(); });
        _socket.connectToHost(QHostAddress(QHostAddress::LocalHost), port);
        EXPECT_TRUE(turnUntil([this] { return isConnected(); }));
        _socket.setSocketOption(QAbstractSocket::LowDelayOption, 1); // pieces arrive as pieces
    }

    void send(std::string_view bytes) {
        _socket.write(bytes.data(), static_cast<qint64>(bytes.size()));
        EXPECT_TRUE(turnUntil([this] { return _socket.bytesToWrite() == 0 || !isConnected(); }));
    }

    /// Everything received once it has that size; less if it doesn't come.
    std::string receive(std::size_t size) {
        EXPECT_TRUE(turnUntil([&] { return _received.size() >= size; })) << "received: " << _received;
        return _received;
    }

    /// Everything received once it ends like this.
    std::string receiveUntil(const std::string& end) {
        EXPECT_TRUE(turnUntil([&] { return _received.ends_with(end); })) << "received: " << _received;
        return _received;
    }

    const std::string& received() const { return _received; }
    bool isConnected() const { return _socket.state() == QAbstractSocket::ConnectedState; }
    quint16 localPort() const { return _socket.localPort(); }

    void close() { _socket.close(); }
    /// Ends the connection without the orderly goodbye.
    void abort() { _socket.abort(); }

private:
    std::string _received;
    QTcpSocket _socket;
};
