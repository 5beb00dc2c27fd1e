#include "Framework/CXX/Network/TCPClient.h"

#include "Framework/CXX/Network/AcceptedSocket.h"

#include <atomic>
#include <utility>

namespace {

constexpr char replyTrailer[] = {'\r', '\n', '\0'};

int nextClientId() {
    static std::atomic<int> latestId{1};
    return ++latestId;
}

void writeTrailer(QIODevice& device) { device.write(replyTrailer, sizeof replyTrailer); }

} // namespace

TCPClient::TCPClient(qintptr descriptor, MessageHandler handler) : TCPClient(descriptor, std::move(handler), '\0') {}

TCPClient::TCPClient(qintptr descriptor, MessageHandler handler, char delimiterByte)
    : socketDescriptor(descriptor), socket(new AcceptedSocket(this)), clientState(Working),
      messageHandler(std::move(handler)), delimiter(delimiterByte), clientId(nextClientId()) {
    connect(socket, SIGNAL(readyRead()), this, SLOT(readClient()));
    connect(socket, SIGNAL(disconnected()), this, SLOT(discardClient()));
    socket->setSocketDescriptor(socketDescriptor, QAbstractSocket::ConnectedState, QIODevice::ReadWrite);
}

TCPClient::~TCPClient() = default;

void TCPClient::closeClient() {
    socket->close();
    clientState = ClosedByUs;
}

void TCPClient::readClient() {
    // Again after each round: what arrived while a message was handled is taken in the same call.
    for (qint64 available = socket->bytesAvailable(); available != 0; available = socket->bytesAvailable()) {
        const QByteArray bytes = socket->read(available);
        takeBytes({bytes.data(), static_cast<std::size_t>(bytes.size())});
    }
}

void TCPClient::takeBytes(std::string_view bytes) {
    while (clientState == Working && !bytes.empty()) { // a handler may have closed this side
        const std::size_t end = bytes.find(delimiter);
        const std::string_view piece = bytes.substr(0, end);
        buffer.insert(buffer.end(), piece.begin(), piece.end());
        if (end == std::string_view::npos)
            return;
        answerMessage();
        bytes.remove_prefix(end + 1);
    }
}

void TCPClient::answerMessage() {
    auto* const asker = qobject_cast<QIODevice*>(sender());
    const std::string reply = messageHandler(std::string(buffer.begin(), buffer.end()));
    asker->write(reply.c_str()); // up to its first NUL: one within a reply would end it for the reader
    writeTrailer(*asker);
    buffer.clear();
}

void TCPClient::incomingNotification(QByteArray notification) {
    socket->write(notification);
    writeTrailer(*socket);
}

void TCPClient::discardClient() {
    emit clientDisconnecting(socketDescriptor);
    socket->deleteLater();
    deleteLater();
}
