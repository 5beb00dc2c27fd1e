#pragma once

#include <ucontext.h>

#include <csignal>

namespace Halden::System {

/// The handler of the crash signals (SA_SIGINFO).
void onCrashSignal(int number, siginfo_t* info, void* context) noexcept;

/// The terminate handler.
[[noreturn]] void onTerminate() noexcept;

} // namespace Halden::System
