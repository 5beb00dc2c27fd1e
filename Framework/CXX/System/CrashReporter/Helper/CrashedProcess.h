#pragma once

#include "Framework/CXX/System/CrashReporter/Helper/ProcessMemory.h"
#include "Framework/CXX/System/CrashReporter/Helper/StoppedThreads.h"

#include <elfutils/libdwfl.h>
#include <sys/types.h>
#include <ucontext.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Halden::System {

/// A process in which one thread waits for us in its crash handler, its threads held, its modules known.
class CrashedProcess {
public:
    /// `contextAddress`: where in that process the registers of the crashing thread are kept. Raises
    /// std::runtime_error if we may not look into the process, or nothing is known of its modules.
    CrashedProcess(pid_t process, pid_t crashingThread, std::uint64_t contextAddress);

    pid_t process() const { return _process; }
    pid_t crashingThread() const { return _crashingThread; }

    /// Registers of the crashing thread where it crashed, not where it waits.
    const ucontext_t& context() const { return _context; }
    const std::map<pid_t, ThreadState>& otherThreads() const { return _others.threads(); }
    ProcessMemory& memory() { return _memory; }
    const ProcessMemory& memory() const { return _memory; }
    Dwfl* dwfl() const { return _dwfl.get(); }

    /// Where the crashing thread stood by its registers, if that is no code at all (a call through a bad
    /// pointer); its stack is then walked from the caller on.
    std::optional<std::uint64_t> badJump() const { return _badJump; }

    /// The instruction address, and whether it is the very next instruction rather than a return address.
    /// False ends the walk.
    using OnFrame = std::function<bool(std::uint64_t, bool)>;

    /// From the innermost frame outwards. Returns why the library ended the walk early; empty: it did not.
    std::string walkStack(pid_t thread, const OnFrame& onFrame);

private:
    struct EndDwfl {
        void operator()(Dwfl* dwfl) const { dwfl_end(dwfl); }
    };

    void openModules();
    void leaveBadJump();
    bool setInitialRegisters(Dwfl_Thread* thread);
    static const Dwfl_Thread_Callbacks& threadCallbacks();

    pid_t _process;
    pid_t _crashingThread;
    ProcessMemory _memory;
    ucontext_t _context = {};
    StoppedThreads _others;
    std::unique_ptr<Dwfl, EndDwfl> _dwfl;
    ucontext_t _walkFrom = {}; ///< the context, but for a bad jump
    std::optional<std::uint64_t> _badJump;
};

} // namespace Halden::System
