#pragma once

#include "Framework/CXX/System/CrashReporter/Helper/CrashedProcess.h"
#include "Framework/CXX/System/CrashReporter/Helper/ProcessMaps.h"

#include <string>
#include <vector>

namespace Halden::System {

/// The bytes of the note segment of a core file: the process, its threads with their registers (the
/// crashing one first), the auxiliary vector, the table of mapped files.
std::string coreNotes(const CrashedProcess& process, int signal, const std::vector<ProcessMapping>& maps);

} // namespace Halden::System
