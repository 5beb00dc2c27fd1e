#pragma once

namespace Halden::System {

/// Gives the calling thread an alternate stack until dropAlternateStack or its end.
void keepAlternateStack();
void dropAlternateStack() noexcept;

} // namespace Halden::System
