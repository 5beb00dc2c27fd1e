#include "Platform/V4l2/Kernel/DeviceErrors.h"

#include "Platform/Shared/ErrnoError.h"

#include <cerrno>
#include <string>
#include <system_error>

namespace Platform::V4l2 {
namespace {

/// What a person needs to know beyond the system's own text; empty where there is nothing to add.
std::string_view hintFor(std::string_view operation, int error) {
    switch (error) {
    case EACCES:
    case EPERM:
        return operation == "open" ? "the user that runs the hub must be in the group \"video\"" : "";
    case EBUSY:
        return "the camera is in use by another program";
    case ENODEV:
    case ESHUTDOWN:
    case ENXIO:
    case ENOENT:
        return "the camera has been unplugged";
    case ENOSPC:
        return "the USB bus has no bandwidth left for this format";
    case ETIMEDOUT:
        return "the camera does not answer";
    default:
        return "";
    }
}

} // namespace

winrt::hresult_error deviceError(std::string_view operation, std::string_view device, int error) {
    std::string reason = std::generic_category().message(error);
    if (const std::string_view hint = hintFor(operation, error); !hint.empty())
        reason.append(" (").append(hint).append(")");
    return Shared::platformError(operation, device, Shared::codeOfErrno(error), reason);
}

bool meansUnplugged(int error) { return error == ENODEV || error == ESHUTDOWN; }

winrt::hresult_error goneError(std::string_view operation, std::string_view device) {
    return deviceError(operation, device, ENODEV);
}

winrt::hresult_error refusedError(std::string_view operation, std::string_view device) {
    return Shared::platformError(operation, device, winrt::result::fail, "the camera refuses");
}

} // namespace Platform::V4l2
