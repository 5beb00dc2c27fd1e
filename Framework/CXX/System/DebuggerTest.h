#pragma once

namespace Platform::Linux {

/// Whether another process traces this one. False if the system does not tell.
bool isDebuggerPresent();

} // namespace Platform::Linux
