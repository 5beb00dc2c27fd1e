#pragma once

#include <csignal>
#include <cstddef>

namespace Halden::System {

/// A stack for signal handlers of the calling thread, with a guard page below, so that the overflow of
/// the ordinary stack can be handled; the earlier one comes back in the end. Does nothing in a thread that
/// has one of sufficient size already, or when memory is refused. To be destroyed by the thread that made it.
class AlternateStack {
public:
    AlternateStack() noexcept;
    ~AlternateStack();
    AlternateStack(const AlternateStack&) = delete;
    AlternateStack& operator=(const AlternateStack&) = delete;

private:
    void* _memory = nullptr; ///< null: nothing was done
    std::size_t _size = 0;
    stack_t _previous = {};
};

} // namespace Halden::System
