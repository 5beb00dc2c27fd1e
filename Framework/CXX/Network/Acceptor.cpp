#include "Framework/CXX/Network/Acceptor.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QAbstractEventDispatcher>
#include <algorithm>
#include <cerrno>
#include <utility>

namespace {

constexpr int retryIntervalInMs = 100;

/// Left to the rest of the process while clients take all others: cameras, logs, a crash record.
constexpr rlim_t mostReserved = 64;

bool isClientWaiting(int listening) {
    pollfd waited{listening, POLLIN, 0};
    return ::poll(&waited, 1, 0) > 0;
}

/// Whether there is a descriptor beyond those that are left to the rest.
bool hasFreeDescriptor(int any) {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    const int next = ::fcntl(any, F_DUPFD_CLOEXEC, 0); // the lowest that is free
    if (next < 0)
        return false;
    ::close(next);
    return static_cast<rlim_t>(next) < limit.rlim_cur - std::min(limit.rlim_cur / 4, mostReserved);
}

bool isLackOfResources(int error) { return error == EMFILE || error == ENFILE || error == ENOBUFS || error == ENOMEM; }

} // namespace

Acceptor::Acceptor(QTcpServer* owner, std::function<void(qintptr)> connectionHandler)
    : QObject(owner), server(owner), handleConnection(std::move(connectionHandler)) {
    if (!server->isListening() || QAbstractEventDispatcher::instance() == nullptr)
        return;
    server->pauseAccepting();
    // The server lets 50 wait; the others would lose a second.
    ::listen(static_cast<int>(server->socketDescriptor()), SOMAXCONN);
    incoming = new QSocketNotifier(server->socketDescriptor(), QSocketNotifier::Read, this);
    retry.setSingleShot(true);
    connect(incoming, &QSocketNotifier::activated, this, &Acceptor::acceptAll);
    connect(&retry, &QTimer::timeout, this, &Acceptor::acceptAll);
}

void Acceptor::acceptAll() {
    while (server->isListening()) {
        const int listening = static_cast<int>(server->socketDescriptor());
        if (!isClientWaiting(listening))
            return resume();
        if (!hasFreeDescriptor(listening))
            return pause();
        const int connection = ::accept4(listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection >= 0)
            handleConnection(connection);
        else if (isLackOfResources(errno))
            return pause();
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
