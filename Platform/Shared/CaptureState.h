#pragma once

#include "Platform/Interface/HresultError.h"

#include <string_view>

namespace Platform::Shared {

/// How far a capture has come, and the errors of what that state does not allow; the texts are the same on every
/// platform. There is no way back:
///
///     New ---> Initialised ---> Closed
///       '------------------------^
///
/// One thread at a time: whoever holds a capture guards its state along with what changes with it.
class CaptureState {
public:
    enum class Phase { New, Initialised, Closed };

    bool is(Phase phase) const { return _phase == phase; }
    void enter(Phase phase) { _phase = phase; }

    /// Raises closed for a closed capture and illegalMethodCall for a new or an initialised one, unless that is the
    /// state wanted, New or Initialised. Both texts are UTF-8 and stand in the error's.
    void require(Phase wanted, std::string_view operation, std::string_view device) const;

private:
    Phase _phase = Phase::New;
};

/// The error of every use of a closed capture.
winrt::hresult_error closedError(std::string_view operation, std::string_view device);

} // namespace Platform::Shared
