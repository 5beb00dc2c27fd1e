#include "Services/LarkspurWindowsCameraHub/Exceptions.h"

#include "Framework/CXX/Common/TextConversion.h"

namespace Halden::LarkspurWindowsCameraHub::Exceptions {

ServiceException::ServiceException(const std::string& message) : std::runtime_error(message) {}

MethodNotSupported::MethodNotSupported(const std::string& method)
    : ServiceException("Method not supported: " + method) {}

RedirectDiagnosticsFailed::RedirectDiagnosticsFailed(const std::string& path)
    : ServiceException("Failed redirecting diagnostics to: " + path) {}

winrtExceptionWrapper::winrtExceptionWrapper(const std::u16string& context, const std::u16string& message, int code)
    : ServiceException(toUtf8(context + u": " + message + u"(" + toUtf16(std::to_string(code)) + u")")) {}

} // namespace Halden::LarkspurWindowsCameraHub::Exceptions
