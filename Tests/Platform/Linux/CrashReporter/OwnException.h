#pragma once

#include <csignal>
#include <exception>
#include <stdexcept>
#include <string>

namespace CrashTest {

/// Like the framework's exceptions: unrelated to std::exception, known to the describing function only.
struct OwnException {
    std::string text;
};

/// Known to nobody.
struct UnknownException {};

/// Its text can't be asked for.
class CrashingText : public std::exception {
public:
    const char* what() const noexcept override {
        std::raise(SIGSEGV);
        return "never seen";
    }
};

/// The describing function of the tests.
inline std::string describeOwnException() {
    try {
        throw;
    } catch (const OwnException& error) {
        if (error.text == "throw while describing") {
            throw std::logic_error("the describing function fails");
        }
        return "own: " + error.text;
    } catch (...) {
        return {};
    }
}

} // namespace CrashTest
