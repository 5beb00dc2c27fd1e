#pragma once

#include "Framework/CXX/System/CrashReporter/HelperProcess.h"

#include <ucontext.h>

namespace Halden::System {

/// Writes what a crashing process can tell of itself without help: why there is no more, registers,
/// values on the stack that point into code, the memory map. Async-signal-safe.
void writeShortRecord(int file, HelperResult helperResult, const ucontext_t& context) noexcept;

} // namespace Halden::System
