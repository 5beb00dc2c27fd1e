#pragma once

namespace Platform::Linux {

/// Gives the calling thread an alternate stack until dropAlternateStack or its end.
void keepAlternateStack();
void dropAlternateStack() noexcept;

} // namespace Platform::Linux
