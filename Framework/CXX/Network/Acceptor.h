#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTcpServer>
#include <QTimer>
#include <functional>

/// Accepts connections in a server's place, which spins where the process has no descriptor left for them, and says
/// nothing. This one, which leaves some to the rest of the process, then emits the server's `acceptError`, once, and
/// leaves the clients waiting in the system's queue until it can accept them all. Belongs to the server. Main thread.
class Acceptor : public QObject {
    Q_OBJECT

public:
    /// For a server that has been told to listen; without effect if it doesn't, or nothing runs events. Raises the
    /// number of clients that can wait to what the system allows. What is called for each connection owns its
    /// descriptor.
    Acceptor(QTcpServer* server, std::function<void(qintptr)> connectionHandler);

private:
    void acceptAll();
    void pause();
    void resume();

    QTcpServer* server;
    std::function<void(qintptr)> handleConnection;
    QSocketNotifier* incoming = nullptr;
    QTimer retry; ///< runs while accepting is paused: a descriptor may become free without a connection's end
    bool paused = false;
};
