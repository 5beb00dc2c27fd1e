#include "Tools/CameraHub/Commands/Session.h"

#include "Tools/CameraHub/Terminal/ExitCode.h"
#include "Tools/Text/TerminalText.h"

#include <json/writer.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace CommandLine {

Session::Session(GlobalOptions options, const Interruption& interruption)
    : _options(std::move(options)), _interruption(interruption) {}

CameraHub::CameraHubClient Session::connect(std::chrono::milliseconds callTimeout) const {
    CameraHub::Options options;
    options.callTimeout = callTimeout;
    options.cancellation = _interruption.cancellation();
    const Progress progress = waitFor("a connection to " + _options.address.host);
    return CameraHub::CameraHubClient(_options.address, options);
}

Progress Session::waitFor(const std::string& what) const { return {!_options.isQuiet, printable(what)}; }

void Session::note(const std::string& text) const {
    if (!_options.isQuiet)
        (void)std::fputs((printable(text) + "\n").c_str(), stderr);
}

void Session::print(std::span<const std::uint8_t> bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || std::fflush(stdout) != 0)
        throw Failure(ExitCode::NotWritten,
                      std::string("cannot write to standard output: ") + std::strerror(errno) + "; see where it goes");
}

void Session::print(const std::string& text) {
    print(std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

void Session::printJson(const Json::Value& value, bool isOneLine) {
    Json::StreamWriterBuilder writer;
    writer["emitUTF8"] = true;
    writer["indentation"] = isOneLine ? "" : "  ";
    print(Json::writeString(writer, value) + "\n");
}

} // namespace CommandLine
