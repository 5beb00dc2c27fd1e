#include "Framework/CXX/Network/AcceptedSocket.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {

// Of one connection in one turn of the event loop, in bytes: some hundred requests, or 50 to 100 us of copying.
constexpr std::size_t receivedAtOnce = 16384;
constexpr std::size_t sentAtOnce = 262144;

constexpr std::size_t partsAtOnce = 64;

/// The system would hold the end of a long reply back until the peer has acknowledged what came before, which it does
/// after 40 ms.
void sendAtOnce(int descriptor) {
    const int yes = 1;
    ::setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
}

} // namespace

void AcceptedSocket::Queue::append(const char* added, std::size_t count) {
    if (taken > bytes.size() / 2) { // not at each call, lest a long queue be moved again and again
        bytes.erase(0, taken);
        taken = 0;
    }
    bytes.append(added, count);
}

void AcceptedSocket::Queue::take(std::size_t count) {
    taken += count;
    if (taken == bytes.size())
        *this = {}; // with its memory: most connections are idle
}

AcceptedSocket::AcceptedSocket(QObject* parent) : QTcpSocket(parent) {}

AcceptedSocket::~AcceptedSocket() {
    if (isConnected())
        ::close(descriptor);
    setSocketState(UnconnectedState); // else the base would end it once more
}

bool AcceptedSocket::setSocketDescriptor(qintptr socketDescriptor, SocketState socketState, OpenMode mode) {
    if (socketDescriptor < 0 || isConnected())
        return false;
    descriptor = static_cast<int>(socketDescriptor);
    sendAtOnce(descriptor);
    setSocketState(socketState);
    QIODevice::open(mode | Unbuffered);
    readable = new QSocketNotifier(socketDescriptor, QSocketNotifier::Read, this);
    connect(readable, &QSocketNotifier::activated, this, &AcceptedSocket::receive);
    return true;
}

qint64 AcceptedSocket::bytesAvailable() const { return static_cast<qint64>(received.size()); }

qint64 AcceptedSocket::bytesToWrite() const { return static_cast<qint64>(unsent.size()); }

qint64 AcceptedSocket::readData(char* data, qint64 maxSize) {
    const std::size_t count = std::min(received.size(), static_cast<std::size_t>(maxSize));
    if (count > 0) {
        std::memcpy(data, received.data(), count);
        received.take(count);
    }
    return static_cast<qint64>(count);
}

qint64 AcceptedSocket::writeData(const char* data, qint64 size) {
    if (!isConnected())
        return -1;
    unsent.append({data, static_cast<std::size_t>(size)});
    sendLater();
    return size;
}

void AcceptedSocket::writeShared(SharedBytes bytes) {
    if (!isConnected())
        return;
    unsent.append(std::move(bytes));
    sendLater();
}

void AcceptedSocket::sendLater() {
    if (!serving)
        sendWhenWritable(!unsent.isEmpty());
}

void AcceptedSocket::receive() {
    std::array<char, receivedAtOnce> bytes;
    const ssize_t count = ::recv(descriptor, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count > 0) {
        received.append(bytes.data(), static_cast<std::size_t>(count));
        serving = true;
        emit readyRead();
        serving = false;
        if (isConnected() && !(writable != nullptr && writable->isEnabled()))
            send();
    } else if (count == 0) {
        endWhenAllIsSent();
    } else if (errno != EAGAIN && errno != EINTR) {
        end();
    }
}

void AcceptedSocket::send() {
    std::size_t left = sentAtOnce;
    while (!unsent.isEmpty() && left > 0) {
        std::array<iovec, partsAtOnce> parts;
        msghdr message{};
        message.msg_iov = parts.data();
        message.msg_iovlen = unsent.front(parts, left);
        const ssize_t count = ::sendmsg(descriptor, &message, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count >= 0) {
            unsent.take(static_cast<std::size_t>(count));
            left -= static_cast<std::size_t>(count);
        } else if (errno == EAGAIN) {
            break;
        } else if (errno != EINTR) {
            return end();
        }
    }
    sendWhenWritable(!unsent.isEmpty());
    if (ending && unsent.isEmpty())
        end();
}

void AcceptedSocket::sendWhenWritable(bool isAwaited) {
    if (writable != nullptr) {
        writable->setEnabled(isAwaited);
    } else if (isAwaited) {
        writable = new QSocketNotifier(descriptor, QSocketNotifier::Write, this);
        connect(writable, &QSocketNotifier::activated, this, &AcceptedSocket::send);
    }
}

void AcceptedSocket::close() {
    QIODevice::close(); // NOLINT(bugprone-parent-virtual-call): the base's own would drop what is unsent
    if (isConnected())
        endWhenAllIsSent();
}

void AcceptedSocket::endWhenAllIsSent() {
    ending = true;
    readable->setEnabled(false);
    if (unsent.isEmpty())
        end();
}

void AcceptedSocket::end() {
    readable->setEnabled(false);
    sendWhenWritable(false);
    unsent = {}; // the connection's objects stay for another turn of the event loop
    ::close(descriptor);
    descriptor = -1;
    setSocketState(UnconnectedState);
    emit disconnected();
}
