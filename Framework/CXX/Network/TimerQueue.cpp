#include "Framework/CXX/Network/TimerQueue.h"

#include <QCoreApplication>
#include <QTimerEvent>
#include <algorithm>
#include <limits>

using std::chrono::milliseconds;

void TimerQueue::add(int id, int intervalInMs, Qt::TimerType type, QObject* receiver) {
    insert({id, intervalInMs, type, receiver, Clock::now() + milliseconds(intervalInMs), ++latestSerial});
}

void TimerQueue::insert(Timer timer) {
    const auto behind = [](const Timer& one, const Timer& other) { return one.due < other.due; };
    timers.insert(std::upper_bound(timers.begin(), timers.end(), timer, behind), timer);
}

bool TimerQueue::remove(int id) {
    return std::erase_if(timers, [&](const Timer& timer) { return timer.id == id; }) > 0;
}

bool TimerQueue::removeAll(QObject* receiver) {
    return std::erase_if(timers, [&](const Timer& timer) { return timer.receiver == receiver; }) > 0;
}

QList<TimerQueue::TimerInfo> TimerQueue::timersOf(QObject* receiver) const {
    QList<TimerInfo> found;
    for (const Timer& timer : timers)
        if (timer.receiver == receiver)
            found.append({timer.id, timer.intervalInMs, timer.type});
    return found;
}

int TimerQueue::remainingTime(int id) const {
    const auto timer = std::find_if(timers.begin(), timers.end(), [&](const Timer& other) { return other.id == id; });
    return timer == timers.end() ? -1 : millisecondsUntil(timer->due);
}

std::optional<TimerQueue::Clock::time_point> TimerQueue::next() const {
    const auto first =
        std::find_if(timers.begin(), timers.end(), [](const Timer& timer) { return !timer.isDelivering; });
    return first == timers.end() ? std::nullopt : std::optional(first->due);
}

int TimerQueue::deliver() {
    if (timers.empty())
        return 0;
    const Clock::time_point now = Clock::now();
    std::vector<std::uint64_t> due;
    for (const Timer& timer : timers)
        if (timer.due <= now)
            due.push_back(timer.serial);
    return static_cast<int>(
        std::count_if(due.begin(), due.end(), [&](std::uint64_t serial) { return deliver(serial, now); }));
}

bool TimerQueue::deliver(std::uint64_t serial, Clock::time_point now) {
    const auto found = find(serial);
    if (found == timers.end() || found->isDelivering)
        return false;
    Timer timer = *found;
    timers.erase(found);
    const milliseconds interval(timer.intervalInMs);
    timer.due = timer.due + interval > now ? timer.due + interval : now + interval; // beats that were missed stay so
    timer.isDelivering = true;
    insert(timer);

    QTimerEvent event(timer.id);
    QCoreApplication::sendEvent(timer.receiver, &event);

    if (const auto delivered = find(serial); delivered != timers.end())
        delivered->isDelivering = false;
    return true;
}

TimerQueue::Timers::iterator TimerQueue::find(std::uint64_t serial) {
    return std::find_if(timers.begin(), timers.end(), [&](const Timer& timer) { return timer.serial == serial; });
}

int millisecondsUntil(TimerQueue::Clock::time_point time) {
    const auto now = TimerQueue::Clock::now();
    if (time <= now)
        return 0;
    const auto rounded = std::chrono::ceil<milliseconds>(time - now).count();
    return static_cast<int>(std::min<std::int64_t>(rounded, std::numeric_limits<int>::max()));
}
