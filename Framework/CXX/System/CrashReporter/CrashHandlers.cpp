#include "Framework/CXX/System/CrashReporter/CrashHandlers.h"

#include "Framework/CXX/System/CrashReporter/CrashRecord.h"
#include "Framework/CXX/System/CrashReporter/CrashSite.h"
#include "Framework/CXX/System/CrashReporter/HangAlarm.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <ctime>

namespace Halden::System {

namespace {

constexpr long waitBeyondHelperInMs = 5000; // for the writing itself

enum class Claim {
    First,   ///< this thread records
    Again,   ///< this thread is at it already and has crashed in doing so
    Late,    ///< another thread is at it
    NotOurs, ///< not installed (any more), or a forked child
};

bool isOurs(const struct sigaction& action) noexcept {
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == onCrashSignal;
}

Claim claimCrash(CrashSite& site) noexcept {
    // In a child of vfork() this is the parent's memory: nothing may be written before this test.
    if (!site.installed || getpid() != site.process)
        return Claim::NotOurs;
    pid_t none = 0;
    const pid_t self = threadId();
    if (site.crashingThread.compare_exchange_strong(none, self))
        return Claim::First;
    return none == self ? Claim::Again : Claim::Late;
}

/// The other thread ends the process. Bounded all the same, in case it can't.
void waitForTheOtherThread(const CrashSite& site) noexcept {
    constexpr long napInMs = 10;
    const std::timespec nap{0, napInMs * 1'000'000};
    for (long waited = 0; waited < site.helperTimeLimitInMs + waitBeyondHelperInMs; waited += napInMs)
        nanosleep(&nap, nullptr);
}

void record(CrashSite& site, const siginfo_t* info, const ExceptionText* exception,
            const ucontext_t& context) noexcept {
    CrashReason reason{info, exception, &context, {}};
    clock_gettime(CLOCK_REALTIME, &reason.time);
    site.stage = CrashStage::Recording;
    site.reserved.release();
    recordCrash(site, reason);
    restorePreviousActions(site);
    site.stage = CrashStage::Recorded;
}

/// The signal comes once more as soon as the handler returns, at the very instruction and with the very
/// information of the first time, and meets the disposition that stood before the install.
void raiseAgain(int number, siginfo_t* info) noexcept {
    if (syscall(SYS_rt_tgsigqueueinfo, getpid(), threadId(), number, info) != 0)
        syscall(SYS_tgkill, getpid(), threadId(), number);
}

void endBySignal(int number) noexcept {
    struct sigaction byDefault{};
    byDefault.sa_handler = SIG_DFL;
    sigaction(number, &byDefault, nullptr);
}

/// A text may be asked of anybody's code, with any lock held and a heap that may be broken.
void describeException(CrashSite& site) noexcept {
    site.stage = CrashStage::Describing;
    const HangAlarm alarm(site.helperTimeLimitInMs);
    describeCurrentException(site.exception, site.describeException);
}

void recordException(CrashSite& site) noexcept {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    static ucontext_t context; // not on the stack: it may be as good as full
    getcontext(&context);
    record(site, nullptr, &site.exception, context);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

} // namespace

void onCrashSignal(int number, siginfo_t* info, void* context) noexcept {
    const int savedErrno = errno;
    CrashSite& site = crashSite();
    switch (claimCrash(site)) {
    case Claim::First:
        record(site, info, nullptr, *static_cast<const ucontext_t*>(context));
        break;
    case Claim::Again:
        if (site.stage == CrashStage::Describing)
            record(site, info, &site.exception, *static_cast<const ucontext_t*>(context));
        else
            endBySignal(number);
        break;
    case Claim::Late:
        waitForTheOtherThread(site);
        endBySignal(number);
        break;
    case Claim::NotOurs:
        restorePreviousActions(site);
        break;
    }
    raiseAgain(number, info);
    errno = savedErrno;
}

void onTerminate() noexcept {
    CrashSite& site = crashSite();
    switch (claimCrash(site)) {
    case Claim::First:
        describeException(site);
        recordException(site);
        break;
    case Claim::Again:
        if (site.stage == CrashStage::Describing)
            recordException(site);
        break;
    case Claim::Late:
        waitForTheOtherThread(site);
        break;
    case Claim::NotOurs:
        restorePreviousActions(site);
        break;
    }
    if (site.previousTerminate != nullptr)
        site.previousTerminate();
    std::abort();
}

bool takeSignals(CrashSite& site) noexcept {
    struct sigaction action{};
    action.sa_sigaction = onCrashSignal;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigfillset(&action.sa_mask);
    bool taken = true;
    for (std::size_t i = 0; i < crashSignals.size(); ++i)
        taken = sigaction(crashSignals[i], nullptr, &site.previousActions[i]) == 0 && taken;
    for (std::size_t i = 0; taken && i < crashSignals.size(); ++i)
        taken = sigaction(crashSignals[i], &action, nullptr) == 0;
    if (!taken)
        restorePreviousActions(site);
    return taken;
}

void restorePreviousActions(const CrashSite& site) noexcept {
    for (std::size_t i = 0; i < crashSignals.size(); ++i) {
        struct sigaction current{};
        if (sigaction(crashSignals[i], nullptr, &current) == 0 && isOurs(current))
            sigaction(crashSignals[i], &site.previousActions[i], nullptr);
    }
}

} // namespace Halden::System
