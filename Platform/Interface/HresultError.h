#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace winrt {

/// A platform result code: negative for failures. The values are those of <winerror.h>.
using hresult = std::int32_t;

/// What each code says where a platform raises it. A failure that none of them tells is fail.
namespace result {
constexpr hresult make(std::uint32_t code) { return static_cast<hresult>(code); }

constexpr hresult ok = 0;                               // S_OK: what event handlers return
constexpr hresult noInterface = make(0x80004002);       // E_NOINTERFACE: the value has another type
constexpr hresult fail = make(0x80004005);              // E_FAIL: whatever has no code of its own
constexpr hresult outOfBounds = make(0x8000000B);       // E_BOUNDS: no such position or key
constexpr hresult changedState = make(0x8000000C);      // E_CHANGED_STATE: not raised by platforms; for their users
constexpr hresult illegalMethodCall = make(0x8000000E); // E_ILLEGAL_METHOD_CALL: not in this state
constexpr hresult closed = make(0x80000013);            // RO_E_CLOSED: the capture is closed
constexpr hresult handlerTaken = make(0x80000018);      // E_ILLEGAL_DELEGATE_ASSIGNMENT: the operation has its handler
constexpr hresult notFound = make(0x80070002);          // ERROR_FILE_NOT_FOUND: nothing there, or the camera is gone
constexpr hresult accessDenied = make(0x80070005);      // E_ACCESSDENIED: the user may not
constexpr hresult outOfMemory = make(0x8007000E);       // E_OUTOFMEMORY: the machine has no more
constexpr hresult invalidArgument = make(0x80070057);   // E_INVALIDARG: a value that can never do
constexpr hresult busy = make(0x800700AA);              // ERROR_BUSY: another program has it
constexpr hresult timeout = make(0x800705B4);           // ERROR_TIMEOUT: the camera does not answer
} // namespace result

/// The one error type of the platform: nothing else leaves a call. Like its model it is no std::exception, so that a
/// catch clause for standard exceptions never swallows a camera failure by accident. Never changes. Any thread.
class hresult_error {
public:
    hresult_error(hresult code, std::u16string message) : _code(code), _message(std::move(message)) {}
    virtual ~hresult_error() = default;
    hresult_error(const hresult_error&) = default;
    hresult_error& operator=(const hresult_error&) = default;

    /// One of winrt::result, or a code of the system's; negative.
    hresult code() const noexcept { return _code; }

    /// What failed, on which device and why, as "OPERATION on DEVICE: reason"; UTF-16, for the log.
    const std::u16string& message() const noexcept { return _message; }

private:
    hresult _code;
    std::u16string _message;
};

/// The state that the caller relied on has changed, or did not come about in time.
class hresult_changed_state : public hresult_error {
public:
    explicit hresult_changed_state(std::u16string message) : hresult_error(result::changedState, std::move(message)) {}
};

/// An index or key that a collection does not have.
class hresult_out_of_bounds : public hresult_error {
public:
    explicit hresult_out_of_bounds(std::u16string message) : hresult_error(result::outOfBounds, std::move(message)) {}
};

} // namespace winrt
