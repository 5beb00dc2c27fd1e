#pragma once

#include <stdexcept>
#include <string>

/// The exceptions whose text reaches a client; every other one ends the process. UTF-8.
namespace Halden::LarkspurWindowsCameraHub::Exceptions {

class ServiceException : public std::runtime_error {
public:
    explicit ServiceException(const std::string& message);
};

class MethodNotSupported : public ServiceException {
public:
    explicit MethodNotSupported(const std::string& method);
};

class RedirectDiagnosticsFailed : public ServiceException {
public:
    explicit RedirectDiagnosticsFailed(const std::string& path);
};

/// A platform failure on its way to a client: "CONTEXT: MESSAGE(CODE)", the code in signed decimal.
class winrtExceptionWrapper : public ServiceException {
public:
    winrtExceptionWrapper(const std::u16string& context, const std::u16string& message, int code);
};

} // namespace Halden::LarkspurWindowsCameraHub::Exceptions
