#pragma once

#include "Framework/CXX/System/CrashReporter/CrashSite.h"

#include <csignal>

namespace Halden::System {

/// The handler of the crash signals (SA_SIGINFO).
void onCrashSignal(int number, siginfo_t* info, void* context) noexcept;

/// The terminate handler.
[[noreturn]] void onTerminate() noexcept;

/// Sets that handler for the crash signals and keeps what stood there in the site. False, with nothing changed, if the
/// system refuses.
bool takeSignals(CrashSite& site) noexcept;

/// Puts back the dispositions that stood before the install, but for those that somebody has changed
/// since. Async-signal-safe.
void restorePreviousActions(const CrashSite& site) noexcept;

} // namespace Halden::System
