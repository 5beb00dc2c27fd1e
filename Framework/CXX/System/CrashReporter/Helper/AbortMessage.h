#pragma once

#include "Framework/CXX/System/CrashReporter/Helper/ProcessMemory.h"

#include <elfutils/libdwfl.h>

#include <string>

namespace Halden::System {

/// What the C library had to say when it ended the process by itself (a failed assertion, damage found in
/// the heap), without line ends; empty if it did not.
std::string abortMessage(Dwfl* dwfl, ProcessMemory& memory);

} // namespace Halden::System
