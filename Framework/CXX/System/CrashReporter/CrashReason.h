#pragma once

#include "Framework/CXX/System/CrashReporter/ExceptionText.h"
#include "Framework/CXX/System/CrashReporter/RawText.h"

#include <ucontext.h>

#include <csignal>
#include <ctime>

namespace Halden::System {

/// Why the process dies, and where.
struct CrashReason {
    const siginfo_t* signal;        ///< null: std::terminate
    const ExceptionText* exception; ///< null: no exception is involved
    const ucontext_t* context;      ///< registers of the crashing thread
    std::timespec time;             ///< CLOCK_REALTIME
};

using ReasonText = RawText<4000>;

/// One sentence for a person, without an end of line. Async-signal-safe; returns static memory.
const ReasonText& describeReason(const CrashReason& reason) noexcept;

} // namespace Halden::System
