#pragma once

namespace Halden::System {

/// Whether another process traces this one. False if the system does not tell.
bool isDebuggerPresent();

} // namespace Halden::System
