#include "Framework/CXX/System/CrashReporter/HelperProcess.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <ctime>

namespace Halden::System {

namespace {

constexpr int couldNotRun = 127; // the shell's number for it
constexpr long napInMs = 2;

struct Arguments {
    RawText<24> process;
    RawText<24> thread;
    RawText<24> context;
    RawText<24> signal;
    RawText<24> timeLimitInMs;
    const char* list[8] = {};
};

/// What Helper/Main.cpp reads.
void fill(Arguments& arguments, const CrashSite& site, const PathText& coreFile, const CrashReason& reason) noexcept {
    arguments.process.decimal(getpid());
    arguments.thread.decimal(threadId());
    arguments.context.decimal(reinterpret_cast<std::intptr_t>(reason.context));
    arguments.signal.decimal(reason.signal != nullptr ? reason.signal->si_signo : SIGABRT);
    arguments.timeLimitInMs.decimal(site.helperTimeLimitInMs);
    const char** next = arguments.list;
    *next++ = site.helper.c_str();
    *next++ = arguments.process.c_str();
    *next++ = arguments.thread.c_str();
    *next++ = arguments.context.c_str();
    *next++ = arguments.signal.c_str();
    *next++ = arguments.timeLimitInMs.c_str();
    if (!coreFile.empty())
        *next++ = coreFile.c_str();
}

/// fork() takes the locks of the heap and runs other people's handlers; the bare call does not. The
/// child has a copy of the memory, so that it can't disturb this process.
pid_t bareFork() noexcept { return static_cast<pid_t>(syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)); }

[[noreturn]] void becomeHelper(const Arguments& arguments, int record, int goSign) noexcept {
    char unused;
    while (read(goSign, &unused, 1) < 0 && errno == EINTR) {
    }
    // Standard error too: what the loader says of a missing library belongs into the record.
    if (dup2(record, STDOUT_FILENO) >= 0 && dup2(record, STDERR_FILENO) >= 0) {
        close(STDIN_FILENO);
        syscall(SYS_close_range, 3u, ~0u, 0u);
        // No environment: it could make the loader or the unwinding library load or fetch things.
        const char* const noEnvironment[] = {nullptr};
        execve(arguments.list[0], const_cast<char* const*>(arguments.list), const_cast<char* const*>(noEnvironment));
    }
    _exit(couldNotRun);
}

long elapsedInMs(const std::timespec& since) noexcept {
    std::timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (now.tv_sec - since.tv_sec) * 1000 + (now.tv_nsec - since.tv_nsec) / 1'000'000;
}

HelperResult waitForHelper(pid_t helper, long limitInMs) noexcept {
    std::timespec start{};
    clock_gettime(CLOCK_MONOTONIC, &start);
    for (;;) {
        int status = 0;
        const pid_t ended = waitpid(helper, &status, WNOHANG);
        if (ended < 0 && errno != EINTR)
            return HelperResult::Finished; // another thread has waited for it; all we know is that it has ended
        if (ended == helper) {
            if (WIFEXITED(status) && WEXITSTATUS(status) == couldNotRun)
                return HelperResult::NotStarted;
            return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? HelperResult::Finished : HelperResult::Failed;
        }
        if (elapsedInMs(start) >= limitInMs) {
            kill(helper, SIGKILL);
            return HelperResult::TimedOut; // not waited for: even a killed process may take its time to end
        }
        const std::timespec nap{0, napInMs * 1'000'000};
        nanosleep(&nap, nullptr);
    }
}

HelperResult startAndWait(const Arguments& arguments, long limitInMs, int record) noexcept {
    int goSign[2] = {-1, -1};
    if (pipe2(goSign, O_CLOEXEC) != 0)
        return HelperResult::NotStarted;
    const pid_t helper = bareFork();
    if (helper == 0) {
        close(goSign[1]);
        becomeHelper(arguments, record, goSign[0]);
    }
    close(goSign[0]);
    if (helper > 0) {
        // Where the Yama module forbids a child to look into its parent, the parent has to name it first. It
        // fails harmlessly on a kernel without Yama.
        prctl(PR_SET_PTRACER, static_cast<unsigned long>(helper), 0, 0, 0);
    }
    close(goSign[1]); // go
    return helper < 0 ? HelperResult::NotStarted : waitForHelper(helper, limitInMs);
}

} // namespace

HelperResult runHelper(const CrashSite& site, int record, const PathText& coreFile,
                       const CrashReason& reason) noexcept {
    Arguments arguments;
    fill(arguments, site, coreFile, reason);
    // With SIGCHLD ignored, the kernel would throw the helper's result away.
    struct sigaction byDefault{};
    byDefault.sa_handler = SIG_DFL;
    struct sigaction before{};
    sigaction(SIGCHLD, &byDefault, &before);
    const HelperResult result = startAndWait(arguments, site.helperTimeLimitInMs, record);
    sigaction(SIGCHLD, &before, nullptr);
    return result;
}

} // namespace Halden::System
