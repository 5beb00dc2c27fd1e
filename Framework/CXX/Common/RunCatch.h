#pragma once

#include <exception>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

namespace Halden {

/// Root of the framework's own exceptions, a family unrelated to std::exception.
class HaldenExceptionBase {
public:
    HaldenExceptionBase(const HaldenExceptionBase&) = default;
    HaldenExceptionBase& operator=(const HaldenExceptionBase&) = default;
    virtual ~HaldenExceptionBase() = default;

    /// The message, followed by " @ file:line" if the location is known.
    std::u16string getDescription() const;

    /// The same in UTF-8; empty if the message is not well-formed UTF-16.
    std::string getDescriptionUtf8() const;

protected:
    static constexpr int unknownLine = -1;

    HaldenExceptionBase(std::u16string text, std::string sourceFile, int sourceLine);

    std::u16string message;
    std::string file; ///< UTF-8; the source file of the throw, empty as a rule
    int line;         ///< the source line of the throw, or unknownLine
};

/// What the framework itself throws.
class HaldenException : public HaldenExceptionBase {
public:
    explicit HaldenException(std::u16string text);
    HaldenException(const HaldenException&) = default;
    HaldenException& operator=(const HaldenException&) = default;
    ~HaldenException() override = default;
};

/// Takes the UTF-8 description of a caught exception.
using CatchHandler = std::function<void(const std::string&)>;

/// What is told of every caught exception, in order: at first one element, which logs it as an error
/// of "Common.RunCatch". One thread at a time while it is changed.
std::vector<CatchHandler>& catchHandlers();

/// UTF-8: the description of a HaldenException, the what() of a standard exception, a fixed text for
/// anything else; empty for a null pointer.
std::string describeException(std::exception_ptr exception);

/// Describes the exception being handled to all catch handlers, then rethrows it if asked to. Call it
/// inside a catch clause only. What a handler throws propagates.
void handleCurrentException(bool rethrow);

/// The operation's result, or the default (after handleCurrentException) if it throws anything.
template <typename Result>
Result RunCatch(Result defaultValue, const std::function<std::type_identity_t<Result>()>& operation) {
    try {
        return operation();
    } catch (...) {
        handleCurrentException(false);
    }
    return defaultValue;
}

} // namespace Halden
