#pragma once

#include <stdexcept>
#include <string>

namespace CommandLine {

/// What the program ends with. Docs/command-line.md and the manual tell them to users: none is ever changed.
enum class ExitCode {
    Done = 0,
    /// What should not happen.
    Unexpected = 1,
    /// The command line is wrong.
    Usage = 2,
    /// No connection to the hub, or it ended.
    NoHub = 3,
    NoSuchCamera = 4,
    /// The camera failed, or its image was gone twice.
    CaptureFailed = 5,
    TimedOut = 6,
    /// A file, or standard output, cannot be written.
    NotWritten = 7,
    /// The hub does not do what it was asked for, or answers as no hub does.
    Refused = 8,
    /// No hub was found on the network, or nothing is there to look for one.
    NothingFound = 9,
    /// Besides the number of the signal that ended the program.
    Signal = 128,
};

/// Ends the program with a code; what() is one line that says what to do.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), _code(code) {}

    ExitCode code() const { return _code; }

private:
    ExitCode _code;
};

} // namespace CommandLine
