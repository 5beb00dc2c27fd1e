#include "Framework/CXX/System/CrashReporter/HangAlarm.h"

#include "Framework/CXX/System/CrashReporter/CrashSite.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <ctime>

namespace Halden::System {

// The bare calls: the C library's may allocate.
HangAlarm::HangAlarm(long limitInMs) noexcept {
    sigevent event{};
    event.sigev_notify = SIGEV_THREAD_ID;
    event.sigev_signo = SIGABRT;
    event._sigev_un._tid = threadId();
    if (syscall(SYS_timer_create, CLOCK_MONOTONIC, &event, &_timer) != 0) {
        _timer = -1;
        return;
    }
    const itimerspec once{{}, {limitInMs / 1000, limitInMs % 1000 * 1'000'000}};
    syscall(SYS_timer_settime, _timer, 0, &once, nullptr);
}

HangAlarm::~HangAlarm() {
    if (_timer >= 0)
        syscall(SYS_timer_delete, _timer);
}

} // namespace Halden::System
