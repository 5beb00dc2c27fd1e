#pragma once

#include "Framework/CXX/System/CrashReporter/DescribeException.h"
#include "Framework/CXX/System/CrashReporter/ExceptionText.h"
#include "Framework/CXX/System/CrashReporter/LocalTime.h"
#include "Framework/CXX/System/CrashReporter/RawText.h"
#include "Framework/CXX/System/CrashReporter/ReservedDescriptors.h"

#include <limits.h>
#include <sys/types.h>

#include <array>
#include <atomic>
#include <csignal>
#include <exception>

namespace Halden::System {

/// The signals that are recorded.
inline constexpr std::array<int, 5> crashSignals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

using PathText = RawText<PATH_MAX>;

enum class CrashStage {
    None,
    Describing, ///< the texts of an uncaught exception are being asked for, which may fail in any way, or hang
    Recording,
    Recorded, ///< what stood before the install is back; the process is about to end
};

/// All that the crashing side knows, in static memory. Install fills it in; behind that only the thread
/// that crashes first writes to it.
struct CrashSite {
    RawText<200> applicationName;
    RawText<200> applicationVersion;
    PathText reportFolder;
    PathText helper;
    PathText executable;
    bool writeCoreFile = false;
    bool screenshotAsked = false;
    long helperTimeLimitInMs = 0;
    DescribeException describeException = nullptr;
    UtcOffsets utcOffsets;
    ReservedDescriptors reserved;

    std::atomic<bool> installed = false;
    pid_t process = 0; ///< whose crashes are recorded: not those of a forked child
    std::array<struct sigaction, crashSignals.size()> previousActions = {};
    std::terminate_handler previousTerminate = nullptr;

    std::atomic<pid_t> crashingThread = 0; ///< the one that came first; 0: none
    std::atomic<CrashStage> stage = CrashStage::None;
    ExceptionText exception;
};

/// The one of this process.
CrashSite& crashSite() noexcept;

/// The kernel's number of the calling thread. Async-signal-safe.
pid_t threadId() noexcept;

} // namespace Halden::System
