#pragma once

#include "Framework/CXX/Network/SendQueue.h"

#include <QTcpSocket>
#include <cstddef>
#include <string>

class QSocketNotifier;

/// The server's end of a connection. A QTcpSocket takes the end of what the peer sends for the end of the connection,
/// and drops what has not been written by then; this one, which does its own reading and writing, ends only when all of
/// that is on its way, or can't be. Tells of both by `readyRead` and `disconnected`, and of nothing else; what is not
/// declared here is without effect. Main thread.
///
/// All that is written while `readyRead` is served goes out behind it, in one system call as a rule: a request costs
/// that one and one for reading it. No connection holds the event loop up for the others: in a turn of it, each reads
/// and sends so much at most that it takes a part of a millisecond, and leaves the rest to the next turns. It waits for
/// these by having the system say when it takes more, and only then.
class AcceptedSocket : public QTcpSocket {
    Q_OBJECT

public:
    explicit AcceptedSocket(QObject* parent);
    ~AcceptedSocket() override;

    /// Takes over the descriptor of a connection; once. False if it is none.
    bool setSocketDescriptor(qintptr socketDescriptor, SocketState socketState, OpenMode mode) override;

    qint64 bytesAvailable() const override;
    qint64 bytesToWrite() const override;

    /// As any other bytes, but referred to until the last of them has gone. Not null.
    void writeShared(SharedBytes bytes);

    /// Reads nothing more. The connection ends when what has been written is on its way.
    void close() override;

protected:
    qint64 readData(char* data, qint64 maxSize) override;
    /// Keeps the bytes until `readyRead` has been served, or else until the event loop runs.
    qint64 writeData(const char* data, qint64 size) override;

private:
    /// Bytes that are taken from the front and added at the back.
    class Queue {
    public:
        const char* data() const { return bytes.data() + taken; }
        std::size_t size() const { return bytes.size() - taken; }
        void append(const char* added, std::size_t count);
        void take(std::size_t count);

    private:
        std::string bytes;
        std::size_t taken = 0;
    };

    void receive();
    void send();
    void sendLater();
    void sendWhenWritable(bool isAwaited);
    bool isConnected() const { return descriptor >= 0; }
    void endWhenAllIsSent();
    void end();

    int descriptor = -1;
    QSocketNotifier* readable = nullptr;
    QSocketNotifier* writable = nullptr; ///< made when something is first left over
    Queue received;
    SendQueue unsent;
    bool serving = false; ///< `readyRead` is under way
    bool ending = false;  ///< nothing more is read
};
