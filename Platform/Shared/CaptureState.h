#pragma once

#include "Platform/Interface/HresultError.h"

#include <optional>
#include <string>
#include <string_view>

namespace Platform::Shared {

/// How far a capture has come, and the errors of what that state does not allow; the texts are the same on every
/// platform. There is no way back:
///
///     New ---> Initialised ---> Closed
///       '------------------------^
///
/// One thread at a time. Whoever holds a capture guards its state along with what changes with it.
class CaptureState {
public:
    enum class Phase { New, Initialised, Closed };

    bool is(Phase phase) const { return _phase == phase; }
    void enter(Phase phase) { _phase = phase; }

    /// How the latest operation ended that makes the camera ready: nothing, or the error that it raised. Who closes the
    /// capture then finds the reason in the errors of its further use.
    void madeReady(const std::optional<winrt::hresult_error>& error);

    /// Raises closed for a closed capture, illegalMethodCall for one that is initialised. Both texts are UTF-8 and
    /// stand in the error's.
    void requireNew(std::string_view operation, std::string_view device) const;
    /// Raises closed for a closed capture, illegalMethodCall for a new one. The texts as above.
    void requireInitialised(std::string_view operation, std::string_view device) const;

private:
    void requireNotClosed(std::string_view operation, std::string_view device) const;

    Phase _phase = Phase::New;
    std::string _whyNotReady; // empty: it is, or nobody has tried
};

/// Runs an operation that makes a capture's camera ready, and tells the capture's core how it ended.
template <typename Core, typename Work> void makeReady(Core& core, Work&& work) {
    try {
        work();
    } catch (const winrt::hresult_error& error) {
        core.madeReady(error);
        throw;
    }
    core.madeReady(std::nullopt);
}

} // namespace Platform::Shared
