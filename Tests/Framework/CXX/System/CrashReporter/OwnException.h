#pragma once

#include <chrono>
#include <csignal>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>

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

/// Its text never comes, as if a lock were held or the heap led in a circle.
class HangingText : public std::exception {
public:
    const char* what() const noexcept override {
        for (;;)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
};

/// The describing function of the tests.
inline std::string describeOwnException() {
    try {
        throw;
    } catch (const OwnException& error) {
        if (error.text == "throw while describing")
            throw std::logic_error("the describing function fails");
        return "own: " + error.text;
    } catch (...) {
        return {};
    }
}

} // namespace CrashTest
