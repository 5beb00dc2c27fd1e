#pragma once

#include <sys/types.h>
#include <sys/user.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>

namespace Halden::System {

/// One thread of the crashed process.
struct ThreadState {
    std::string name;
    std::optional<user_regs_struct> registers; ///< empty: it could not be stopped
    std::string problem;                       ///< why not
};

/// Holds all threads of a process but one for as long as it lives. The one that is left out, the
/// crashing thread, must run on: it watches over the time limit.
class StoppedThreads {
public:
    StoppedThreads(pid_t process, pid_t leftOut);
    ~StoppedThreads();
    StoppedThreads(const StoppedThreads&) = delete;
    StoppedThreads& operator=(const StoppedThreads&) = delete;

    const std::map<pid_t, ThreadState>& threads() const { return _threads; }

private:
    bool seizeNewThreads();
    void waitUntilStopped(pid_t thread, std::chrono::steady_clock::time_point deadline);

    pid_t _process;
    pid_t _leftOut;
    std::map<pid_t, ThreadState> _threads;
};

/// As the kernel shows it; empty if the thread is gone.
std::string threadName(pid_t process, pid_t thread);

} // namespace Halden::System
