#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace winrt {

/// A platform result code: negative for failures. The values are those of <winerror.h>.
using hresult = std::int32_t;

/// What each code says where a platform raises it. Error numbers of the system become the code that names them, any
/// other number becomes fail.
namespace result {
/// The signed code of a number as <winerror.h> writes it.
constexpr hresult make(std::uint32_t code) { return static_cast<hresult>(code); }

/// S_OK: what event handlers return; never the code of an error.
constexpr hresult ok = 0;

/// E_NOINTERFACE: a value has another type than the one asked for (unbox). Callers raise it for a source without the
/// second interface.
constexpr hresult noInterface = make(0x80004002);

/// E_FAIL: whatever has no code of its own; above all a camera that refuses, and bytes that are no picture.
constexpr hresult fail = make(0x80004005);

/// E_BOUNDS: a list or map has no such position or key, or a DataReader fewer bytes than are to be taken.
constexpr hresult outOfBounds = make(0x8000000B);

/// E_CHANGED_STATE: raised by no platform; by the hub, for a still that does not come in time.
constexpr hresult changedState = make(0x8000000C);

/// E_ILLEGAL_METHOD_CALL: not in this state. A capture that is new or has been initialised already, a watcher that has
/// been started, an operation under way that is asked for its result; or a control that the camera lacks.
constexpr hresult illegalMethodCall = make(0x8000000E);

/// RO_E_CLOSED: the capture was closed before the call, or while the operation was under way.
constexpr hresult closed = make(0x80000013);

/// E_ILLEGAL_DELEGATE_ASSIGNMENT: the operation has had its one handler.
constexpr hresult handlerTaken = make(0x80000018);

/// ERROR_FILE_NOT_FOUND: no device, group, file or folder has that id or path, or the camera has been unplugged.
/// ENOENT, ENODEV, ENXIO, ESHUTDOWN.
constexpr hresult notFound = make(0x80070002);

/// E_ACCESSDENIED: the user that runs the program may not open the camera or the file. EACCES, EPERM.
constexpr hresult accessDenied = make(0x80070005);

/// E_OUTOFMEMORY: the kernel, or the library of a picture format, had none left, or there was none for a still. ENOMEM.
/// In the program's own code it is a std::bad_alloc otherwise.
constexpr hresult outOfMemory = make(0x8007000E);

/// E_INVALIDARG: a value that can never do, so that trying again is of no use. EINVAL.
constexpr hresult invalidArgument = make(0x80070057);

/// ERROR_BUSY: another program has the camera; worth another try later. EBUSY.
constexpr hresult busy = make(0x800700AA);

/// ERROR_TIMEOUT: the camera is there and does not answer, or delivers no frame. ETIMEDOUT.
constexpr hresult timeout = make(0x800705B4);
} // namespace result

/// The one error type of the platform; beside it there is std::bad_alloc alone, where memory runs out. Like its model
/// it is no std::exception, so that a catch clause for standard exceptions never swallows a camera failure by accident.
/// Any thread.
class hresult_error {
public:
    /// The code is a negative one, of winrt::result or the system's.
    hresult_error(hresult code, std::u16string message) : _code(code), _message(std::move(message)) {}
    virtual ~hresult_error() = default;

    /// Keeps code and message of a derived error, not its type: an operation that ends with one raises this class.
    hresult_error(const hresult_error&) = default;

    /// Code and message alone, as with a copy. Not while another thread reads the error.
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
    /// With the code changedState, so that catching either class or looking at the code will do.
    explicit hresult_changed_state(std::u16string message) : hresult_error(result::changedState, std::move(message)) {}
};

/// An index or key that a collection does not have.
class hresult_out_of_bounds : public hresult_error {
public:
    /// With the code outOfBounds, so that catching either class or looking at the code will do.
    explicit hresult_out_of_bounds(std::u16string message) : hresult_error(result::outOfBounds, std::move(message)) {}
};

} // namespace winrt
