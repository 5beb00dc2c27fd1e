#pragma once

#include "Framework/CXX/Network/TimerQueue.h"

#include <sys/epoll.h>

#include <QSocketNotifier>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <vector>

/// The socket notifiers of one event loop. The system keeps the descriptors, and tells of those that are ready, so that
/// the others cost nothing. Any number of notifiers may be on one descriptor. As Qt demands it, a descriptor is closed
/// when its notifiers are disabled; a notifier that is still there then may be told of another descriptor of the same
/// number. Main thread.
class NotifierSet {
public:
    /// The alarm is one more descriptor to wait for, of the owner's. Raises std::system_error.
    explicit NotifierSet(int alarmDescriptor);
    ~NotifierSet();
    NotifierSet(const NotifierSet&) = delete;
    NotifierSet& operator=(const NotifierSet&) = delete;

    /// A descriptor that can't be watched is told to Qt's log, and without effect.
    void add(QSocketNotifier* notifier);
    void remove(QSocketNotifier* notifier);

    /// Waits until a descriptor is ready, at most to that time, if there is one. True if it is the alarm, too.
    bool wait(std::optional<TimerQueue::Clock::time_point> until);

    /// Activates the notifiers of what was ready then, and returns how many that were. None that has gone meanwhile,
    /// and none of a descriptor that was watched anew.
    int deliver();

private:
    struct Watch {
        std::uint32_t serial = 0; ///< differs from that of the same descriptor's watch before
        std::vector<QSocketNotifier*> notifiers{};
    };

    void update(int descriptor, const Watch& watch, bool isNew);
    int deliver(const epoll_event& event, std::uint64_t round);
    bool isWatched(int descriptor, std::uint32_t serial, QSocketNotifier* notifier) const;
    void appendAlwaysReady();

    int queue;
    std::unordered_map<int, Watch> watches; ///< by descriptor; none is without a notifier
    std::vector<int> alwaysReady;           ///< files, which the system does not watch
    std::vector<epoll_event> ready;         ///< of the latest wait
    std::uint64_t waits = 0;
    std::uint32_t latestSerial = 0;
};
