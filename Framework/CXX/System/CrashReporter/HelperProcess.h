#pragma once

#include "Framework/CXX/System/CrashReporter/CrashReason.h"
#include "Framework/CXX/System/CrashReporter/CrashSite.h"

namespace Halden::System {

enum class HelperResult {
    Finished,
    NotStarted, ///< no process, or no such program
    Failed,     ///< it ended with an error of its own
    TimedOut,   ///< it was killed
};

/// Runs the helper with `record` as its standard output, and waits for its end or for the time limit.
/// `coreFile`: empty, or where to write a core file. Async-signal-safe.
HelperResult runHelper(const CrashSite& site, int record, const PathText& coreFile, const CrashReason& reason) noexcept;

} // namespace Halden::System
