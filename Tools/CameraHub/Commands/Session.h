#pragma once

#include "Tools/CameraHub/Terminal/Interruption.h"
#include "Tools/CameraHub/Terminal/Progress.h"

#include <CameraHubClient/CameraHubClient.h>
#include <json/value.h>

#include <chrono>
#include <cstdint>
#include <span>
#include <string>

namespace CommandLine {

/// What every command takes.
struct GlobalOptions {
    CameraHub::Address address;
    bool isJson = false;
    bool isQuiet = false;
};

/// What the commands share: the way to the hub and the way out. Standard output gets results and nothing else, standard
/// error all that is for people.
class Session {
public:
    Session(GlobalOptions options, const Interruption& interruption);

    const GlobalOptions& options() const { return _options; }
    const Interruption& interruption() const { return _interruption; }

    /// A new connection, whose calls may each take that long.
    CameraHub::CameraHubClient connect(std::chrono::milliseconds callTimeout = std::chrono::minutes(1)) const;

    /// Shows what is being waited for, unless -q was given.
    Progress waitFor(const std::string& what) const;

    /// One line at standard error, unless -q was given.
    void note(const std::string& text) const;

    /// To standard output, at once. Throws Failure.
    static void print(std::span<const std::uint8_t> bytes);
    static void print(const std::string& text);

    /// One JSON value and a line's end; over several lines unless it is to be a single one.
    static void printJson(const Json::Value& value, bool isOneLine = false);

private:
    GlobalOptions _options;
    const Interruption& _interruption;
};

} // namespace CommandLine
