#pragma once

#include "Platform/Shared/FileDescriptor.h"

#include <string_view>

namespace Platform::Shared {

/// Wakes a thread that waits in poll; until it drains, it does not wait again. Any thread.
class WakeUp {
public:
    /// `sleeper`: who is woken, for the error's text. Raises winrt::hresult_error, fail, where the system has no
    /// descriptor left.
    explicit WakeUp(std::string_view sleeper);

    void wake() const;
    /// Waiting for the descriptor blocks again.
    void drain() const;
    /// Readable (POLLIN) from wake to drain.
    int descriptor() const { return _descriptor.get(); }

private:
    const FileDescriptor _descriptor;
};

} // namespace Platform::Shared
