#include "Framework/CXX/Network/Acceptor.h"

#include <sys/socket.h>

#include <QAbstractEventDispatcher>
#include <cerrno>
#include <utility>

namespace {

constexpr int retryIntervalInMs = 100;

bool isLackOfResources(int error) { return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM; }

} // namespace

Acceptor::Acceptor(QTcpServer* owner, std::function<void(qintptr)> connectionHandler)
    : QObject(owner), server(owner), handleConnection(std::move(connectionHandler)) {
    if (!server->isListening() || QAbstractEventDispatcher::instance() == nullptr)
        return;
    server->pauseAccepting();
    ::listen(static_cast<int>(server->socketDescriptor()),
             SOMAXCONN); // the server lets 50 wait; the others lose a second
    incoming = new QSocketNotifier(server->socketDescriptor(), QSocketNotifier::Read, this);
    retry.setSingleShot(true);
    connect(incoming, SIGNAL(activated(int)), this, SLOT(acceptAll()));
    connect(&retry, SIGNAL(timeout()), this, SLOT(acceptAll()));
}

void Acceptor::acceptAll() {
    while (server->isListening()) {
        const int connection = ::accept4(static_cast<int>(server->socketDescriptor()), nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0)
            handleConnection(connection);
        else if (isLackOfResources(errno))
            return pause();
        else if (errno == EAGAIN)
            return resume();
        // Else it is that one connection's error.
    }
    incoming->setEnabled(false);
}

void Acceptor::pause() {
    incoming->setEnabled(false);
    retry.start(retryIntervalInMs);
    if (!std::exchange(paused, true))
        emit server->acceptError(QAbstractSocket::SocketResourceError);
}

void Acceptor::resume() {
    incoming->setEnabled(true);
    paused = false;
}
