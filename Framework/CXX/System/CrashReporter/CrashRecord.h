#pragma once

#include "Framework/CXX/System/CrashReporter/CrashReason.h"
#include "Framework/CXX/System/CrashReporter/CrashSite.h"

namespace Halden::System {

/// Writes the whole record: the first lines itself, the rest by way of the helper, or a shorter rest
/// itself if the helper fails. Returns within the helper's time limit. If the record can't be opened,
/// nothing happens. Async-signal-safe; to be called once, with all signals blocked.
void recordCrash(const CrashSite& site, const CrashReason& reason) noexcept;

} // namespace Halden::System
