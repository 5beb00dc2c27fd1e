#pragma once

#include <QTimer>
#include <chrono>

class Listeners;

/// Tells the service manager that has started the hub, if it wants to know, that both ports listen, and from then on
/// from the event loop, twenty times in the time that it waits, that the hub is not stuck. A hub without one of its
/// ports says nothing. Main thread.
class SignsOfLife {
public:
    explicit SignsOfLife(const Listeners& listeners);

    /// A twentieth of the limit; at least 1 ms, at most a day.
    static std::chrono::milliseconds intervalFor(std::chrono::microseconds limit);

private:
    QTimer timer;
};
