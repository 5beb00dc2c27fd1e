#include "Framework/CXX/Network/EpollDispatcher.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <cerrno>

EpollDispatcher::EpollDispatcher() : alarm(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), notifiers(alarm) {}

EpollDispatcher::~EpollDispatcher() { ::close(alarm); }

bool EpollDispatcher::processEvents(QEventLoop::ProcessEventsFlags flags) {
    isInterrupted = false;
    emit awake();
    // What is posted from here on wakes the loop up, as postEvent does each time.
    QCoreApplication::sendPostedEvents();
    if (isInterrupted)
        return false;

    const bool wasAwoken = wait(flags);
    int handled = wasAwoken ? 1 : 0; // what was posted comes in the next turn
    if (!flags.testFlag(QEventLoop::ExcludeSocketNotifiers))
        handled += notifiers.deliver();
    if (!flags.testFlag(QEventLoop::X11ExcludeTimers))
        handled += timers.deliver();
    return handled > 0;
}

/// True if somebody has woken the loop up.
bool EpollDispatcher::wait(QEventLoop::ProcessEventsFlags flags) {
    std::optional<TimerQueue::Clock::time_point> until = TimerQueue::Clock::time_point::min();
    if (flags.testFlag(QEventLoop::WaitForMoreEvents)) {
        emit aboutToBlock();
        until = flags.testFlag(QEventLoop::X11ExcludeTimers) ? std::nullopt : timers.next();
    }
    const bool isAlarm =
        flags.testFlag(QEventLoop::ExcludeSocketNotifiers) ? waitForAlarm(until) : notifiers.wait(until);
    if (!isAlarm)
        return false;
    eventfd_t count = 0;
    ::eventfd_read(alarm, &count);
    isAwoken = false; // behind the reading: who finds it set has the alarm still to be read
    return true;
}

bool EpollDispatcher::waitForAlarm(std::optional<TimerQueue::Clock::time_point> until) {
    pollfd waited{alarm, POLLIN, 0};
    int count = 0;
    do {
        count = ::poll(&waited, 1, until ? millisecondsUntil(*until) : -1);
    } while (count < 0 && errno == EINTR);
    return count > 0;
}

bool EpollDispatcher::hasPendingEvents() { return isAwoken; }

void EpollDispatcher::registerSocketNotifier(QSocketNotifier* notifier) { notifiers.add(notifier); }

void EpollDispatcher::unregisterSocketNotifier(QSocketNotifier* notifier) { notifiers.remove(notifier); }

void EpollDispatcher::registerTimer(int timerId, int interval, Qt::TimerType timerType, QObject* object) {
    timers.add(timerId, interval, timerType, object);
}

bool EpollDispatcher::unregisterTimer(int timerId) { return timers.remove(timerId); }

bool EpollDispatcher::unregisterTimers(QObject* object) { return timers.removeAll(object); }

QList<QAbstractEventDispatcher::TimerInfo> EpollDispatcher::registeredTimers(QObject* object) const {
    return timers.timersOf(object);
}

int EpollDispatcher::remainingTime(int timerId) { return timers.remainingTime(timerId); }

void EpollDispatcher::wakeUp() {
    if (!isAwoken.exchange(true))
        ::eventfd_write(alarm, 1);
}

void EpollDispatcher::interrupt() {
    isInterrupted = true;
    wakeUp();
}

void EpollDispatcher::flush() {}
