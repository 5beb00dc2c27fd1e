#pragma once

#include <array>

namespace Halden::System {

/// File descriptors that are kept for the moment of a crash: a process that has used up all of them is
/// likely to die of just that, and could not open its record then.
class ReservedDescriptors {
public:
    /// Takes them; what the system refuses is not there later.
    void take() noexcept;

    /// Makes them free for use. Async-signal-safe.
    void release() noexcept;

private:
    std::array<int, 4> _descriptors = {-1, -1, -1, -1}; // the record, the two ends of a pipe, the memory map
};

} // namespace Halden::System
