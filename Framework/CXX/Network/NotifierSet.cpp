#include "Framework/CXX/Network/NotifierSet.h"

#include <unistd.h>

#include <QCoreApplication>
#include <QEvent>
#include <QVarLengthArray>
#include <QtGlobal>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

/// Descriptors a wait. The system takes turns with those that are ready: none is forgotten if there are more.
constexpr int readyAtOnce = 128;

constexpr std::uint64_t alarmKey = ~std::uint64_t{0};

struct Kind {
    QSocketNotifier::Type type;
    std::uint32_t event;
};
constexpr std::array kinds{Kind{QSocketNotifier::Read, EPOLLIN}, Kind{QSocketNotifier::Write, EPOLLOUT},
                           Kind{QSocketNotifier::Exception, EPOLLPRI}};

/// All are told of these.
constexpr std::uint32_t endEvents = EPOLLHUP | EPOLLERR;

std::uint64_t keyOf(int descriptor, std::uint32_t serial) {
    return std::uint64_t{serial} << 32 | static_cast<std::uint32_t>(descriptor);
}

int descriptorOf(const QSocketNotifier* notifier) { return static_cast<int>(notifier->socket()); }

} // namespace

NotifierSet::NotifierSet(int alarmDescriptor) : queue(::epoll_create1(EPOLL_CLOEXEC)) {
    epoll_event event{EPOLLIN, {}};
    event.data.u64 = alarmKey;
    if (queue < 0 || ::epoll_ctl(queue, EPOLL_CTL_ADD, alarmDescriptor, &event) != 0)
        throw std::system_error(errno, std::generic_category(), "epoll");
}

NotifierSet::~NotifierSet() { ::close(queue); }

void NotifierSet::add(QSocketNotifier* notifier) {
    const int descriptor = descriptorOf(notifier);
    const auto [watch, isNew] = watches.try_emplace(descriptor);
    if (isNew)
        watch->second.serial = ++latestSerial;
    watch->second.notifiers.push_back(notifier);
    update(descriptor, watch->second, isNew);
}

void NotifierSet::remove(QSocketNotifier* notifier) {
    const int descriptor = descriptorOf(notifier);
    const auto watch = watches.find(descriptor);
    if (watch == watches.end() || std::erase(watch->second.notifiers, notifier) == 0)
        return;
    if (!watch->second.notifiers.empty())
        return update(descriptor, watch->second, false);
    watches.erase(watch);
    std::erase(alwaysReady, descriptor);
    ::epoll_ctl(queue, EPOLL_CTL_DEL, descriptor, nullptr); // fails if it has been closed, which is as well
}

void NotifierSet::update(int descriptor, const Watch& watch, bool isNew) {
    epoll_event event{};
    event.data.u64 = keyOf(descriptor, watch.serial);
    for (const QSocketNotifier* const notifier : watch.notifiers)
        event.events |= std::find_if(kinds.begin(), kinds.end(), [&](const Kind& kind) {
                            return kind.type == notifier->type();
                        })->event;
    if (::epoll_ctl(queue, isNew ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, descriptor, &event) == 0)
        return;
    // The system forgets a descriptor that is closed, and knows one that has come back.
    if (errno == (isNew ? EEXIST : ENOENT) &&
        ::epoll_ctl(queue, isNew ? EPOLL_CTL_MOD : EPOLL_CTL_ADD, descriptor, &event) == 0)
        return;
    if (errno != EPERM)
        qWarning("A socket notifier is without effect: descriptor %d: %s", descriptor, std::strerror(errno));
    else if (std::find(alwaysReady.begin(), alwaysReady.end(), descriptor) == alwaysReady.end())
        alwaysReady.push_back(descriptor);
}

bool NotifierSet::wait(std::optional<TimerQueue::Clock::time_point> until) {
    ++waits;
    int count = 0;
    do {
        const int withoutEnd = -1;
        int timeoutInMs = until ? millisecondsUntil(*until) : withoutEnd;
        if (!alwaysReady.empty())
            timeoutInMs = 0;
        ready.resize(readyAtOnce);
        count = ::epoll_wait(queue, ready.data(), readyAtOnce, timeoutInMs);
    } while (count < 0 && errno == EINTR);
    ready.resize(static_cast<std::size_t>(std::max(count, 0)));
    const bool isAlarm = std::erase_if(ready, [](const epoll_event& event) { return event.data.u64 == alarmKey; }) > 0;
    appendAlwaysReady();
    return isAlarm;
}

void NotifierSet::appendAlwaysReady() {
    for (const int descriptor : alwaysReady) {
        epoll_event event{EPOLLIN | EPOLLOUT, {}};
        event.data.u64 = keyOf(descriptor, watches.at(descriptor).serial);
        ready.push_back(event);
    }
}

int NotifierSet::deliver() {
    const std::uint64_t round = waits;
    int delivered = 0;
    for (std::size_t i = 0; i < ready.size(); ++i)
        delivered += deliver(epoll_event(ready[i]), round);
    return delivered;
}

int NotifierSet::deliver(const epoll_event& event, std::uint64_t round) {
    const auto descriptor = static_cast<int>(event.data.u64 & 0xFFFFFFFF);
    const auto serial = static_cast<std::uint32_t>(event.data.u64 >> 32);
    const auto watch = watches.find(descriptor);
    if (watch == watches.end())
        return 0;
    QVarLengthArray<QSocketNotifier*, 4> notifiers;
    for (const Kind& kind : kinds)
        if ((event.events & (kind.event | endEvents)) != 0)
            for (QSocketNotifier* const notifier : watch->second.notifiers)
                if (notifier->type() == kind.type)
                    notifiers.append(notifier);
    int delivered = 0;
    for (QSocketNotifier* const notifier : notifiers) {
        // An event loop within a handler has waited by itself, and been told again of what was left here.
        if (round != waits || !isWatched(descriptor, serial, notifier))
            continue;
        QEvent activation(QEvent::SockAct);
        QCoreApplication::sendEvent(notifier, &activation);
        ++delivered;
    }
    return delivered;
}

bool NotifierSet::isWatched(int descriptor, std::uint32_t serial, QSocketNotifier* notifier) const {
    const auto watch = watches.find(descriptor);
    if (watch == watches.end() || watch->second.serial != serial)
        return false;
    const auto& notifiers = watch->second.notifiers;
    return std::find(notifiers.begin(), notifiers.end(), notifier) != notifiers.end();
}
