#pragma once

#include <QAbstractEventDispatcher>
#include <QList>
#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

/// The timers of one event loop, in the order in which they are due; equal ones in that of their starting. Those of the
/// coarse kinds are exact, too: that is within what they ask for, and there are few. Main thread.
class TimerQueue {
public:
    using Clock = std::chrono::steady_clock;
    using TimerInfo = QAbstractEventDispatcher::TimerInfo;

    void add(int id, int intervalInMs, Qt::TimerType type, QObject* receiver);
    bool remove(int id);               ///< false if there is none of that id
    bool removeAll(QObject* receiver); ///< false if it has none
    QList<TimerInfo> timersOf(QObject* receiver) const;

    /// In ms, rounded up; 0 if it is due, -1 if there is none of that id.
    int remainingTime(int id) const;

    /// When the first is due; nothing if none will be before its receiver returns.
    std::optional<Clock::time_point> next() const;

    /// Sends their events to the receivers of those that are due now, once each, and returns how many that were. A
    /// timer that is started meanwhile waits for the next call, and one whose receiver runs an event loop of its own
    /// for its return.
    int deliver();

private:
    struct Timer {
        int id;
        int intervalInMs;
        Qt::TimerType type;
        QObject* receiver;
        Clock::time_point due;
        std::uint64_t serial; ///< an id may be given again
        bool isDelivering = false;
    };
    using Timers = std::vector<Timer>;

    void insert(Timer timer);
    bool deliver(std::uint64_t serial, Clock::time_point now);
    Timers::iterator find(std::uint64_t serial);

    Timers timers; ///< by `due`
    std::uint64_t latestSerial = 0;
};

/// From now on, in ms, rounded up; 0 for what is over.
int millisecondsUntil(TimerQueue::Clock::time_point time);
