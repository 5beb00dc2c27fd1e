#pragma once

#include "Framework/CXX/Network/NotifierSet.h"
#include "Framework/CXX/Network/TimerQueue.h"

#include <QAbstractEventDispatcher>
#include <atomic>

/// What Qt's event loop runs on: sockets by epoll, so that a turn costs as much as there is to do in it, and not as
/// much as there are connections. In a turn come the posted events, then the notifiers of one batch of ready
/// descriptors, then the timers that are due. To be given to QCoreApplication::setEventDispatcher before the
/// application object is made, which then owns it. Main thread, except for wakeUp and interrupt: any thread.
class EpollDispatcher : public QAbstractEventDispatcher {
public:
    /// Raises std::system_error if the system has no descriptor left.
    EpollDispatcher();
    ~EpollDispatcher() override;

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    bool hasPendingEvents() override;

    void registerSocketNotifier(QSocketNotifier* notifier) override;
    void unregisterSocketNotifier(QSocketNotifier* notifier) override;

    void registerTimer(int timerId, int interval, Qt::TimerType timerType, QObject* object) override;
    bool unregisterTimer(int timerId) override;
    bool unregisterTimers(QObject* object) override;
    QList<TimerInfo> registeredTimers(QObject* object) const override;
    int remainingTime(int timerId) override;

    void wakeUp() override;
    void interrupt() override;
    void flush() override;

private:
    bool wait(QEventLoop::ProcessEventsFlags flags);
    bool waitForAlarm(std::optional<TimerQueue::Clock::time_point> until);

    int alarm; ///< readable from a wakeUp to the end of the wait that it ends
    std::atomic<bool> isAwoken{false};
    std::atomic<bool> isInterrupted{false};
    NotifierSet notifiers;
    TimerQueue timers;
};
