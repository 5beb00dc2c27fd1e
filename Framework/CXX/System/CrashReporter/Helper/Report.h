#pragma once

#include "Framework/CXX/System/CrashReporter/Helper/CrashedProcess.h"

#include <cstdio>

namespace Halden::System {

/// Appends the crashing thread's stack, the other threads' stacks, registers and modules, each section
/// written out as soon as it is complete.
void writeReport(CrashedProcess& process, std::FILE* file);

} // namespace Halden::System
