#pragma once

#include "Framework/CXX/System/CrashReporter/Helper/CrashedProcess.h"

#include <string>

namespace Halden::System {

/// Writes an ELF core file that debuggers can open: general registers of all threads, private memory that
/// differs from its file, the table of mapped files. Left out: floating-point registers, shared memory
/// (camera buffers), code that stands in files. The file appears when it is complete, readable by its
/// owner only. Returns the problem; empty: none.
std::string writeCoreFile(const CrashedProcess& process, int signal, const std::string& path);

} // namespace Halden::System
