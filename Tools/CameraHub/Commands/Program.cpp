#include "Tools/CameraHub/Commands/Program.h"

#include "Tools/CameraHub/Commands/Arguments.h"
#include "Tools/CameraHub/Picture/RgbPicture.h"
#include "Tools/CameraHub/Terminal/ExitCode.h"
#include "Tools/Text/CameraChoice.h"
#include "Tools/Text/TerminalText.h"

#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string>

namespace CommandLine {
namespace {

void runCommand(const Session& session, const Arguments& arguments) {
    struct Run {
        const Session& session;
        void operator()(const ListOptions& options) const { list(session, options); }
        void operator()(const CaptureOptions& options) const { capture(session, options); }
        void operator()(const BracketOptions& options) const { bracket(session, options); }
        void operator()(const FindOptions& options) const { find(session, options); }
        void operator()(const VersionOptions&) const { version(session); }
        void operator()(const DiagnosticsOptions& options) const { diagnostics(session, options); }
        void operator()(const HealthOptions& options) const { health(session, options); }
    };
    std::visit(Run{session}, arguments.command);
}

/// What the client throws, as what is to be done about it.
[[noreturn]] void rethrowAsFailure(const CameraHub::Address& address) {
    const std::string place = address.host + ":" + std::to_string(address.messagePort);
    const std::string busy = "; it may be at work for others, try again, or see: camera-hub health";
    try {
        throw;
    } catch (const CameraHub::ConnectionFailed& error) {
        throw Failure(ExitCode::NoHub, std::string(error.what()) +
                                           "; start a hub there, or name its machine by --host (camera-hub find)");
    } catch (const CameraHub::ConnectionEnded& error) {
        throw Failure(ExitCode::NoHub, std::string(error.what()) + "; see whether it is back: camera-hub health");
    } catch (const CameraHub::TimedOut& error) {
        throw Failure(ExitCode::TimedOut, error.what() + busy);
    } catch (const CameraHub::CaptureRefused& error) {
        if (error.code() == CameraHub::CaptureRefused::cameraNotConnected)
            throw Failure(ExitCode::NoSuchCamera, "the camera has gone; see which are there: camera-hub list");
        throw Failure(ExitCode::CaptureFailed, std::string("no still: ") + error.what() + "; try again");
    } catch (const CameraHub::ImageGone&) {
        throw Failure(ExitCode::CaptureFailed,
                      "the image was gone, twice: other clients capture as well, or the camera failed; try again");
    } catch (const CameraHub::Error& error) {
        throw Failure(ExitCode::Refused, place + ": " + error.what() + "; see which hub, of which version, is there");
    } catch (const NoSuchCamera& error) {
        throw Failure(ExitCode::NoSuchCamera, error.what());
    } catch (const BrokenPicture& error) {
        throw Failure(ExitCode::CaptureFailed, std::string("the picture is broken: ") + error.what() + "; try again");
    } catch (const std::invalid_argument& error) {
        throw Failure(ExitCode::Usage, error.what());
    }
}

int codeOfSignal() { return static_cast<int>(ExitCode::Signal) + Interruption::signal(); }

int run(const Arguments& arguments) {
    const Interruption interruption;
    const Session session(arguments.global, interruption);
    try {
        try {
            runCommand(session, arguments);
        } catch (const CameraHub::Cancelled&) {
            Interruption::check();
            throw;
        } catch (const Failure&) {
            throw;
        } catch (const std::exception&) {
            rethrowAsFailure(arguments.global.address);
        }
    } catch (const Interrupted&) {
        if (Interruption::signal() == SIGALRM)
            throw Failure(ExitCode::TimedOut, "the hub did not answer in time; look at its log, or start it anew");
        return codeOfSignal();
    }
    return static_cast<int>(ExitCode::Done);
}

int tell(const std::string& text, ExitCode code) {
    (void)std::fputs(("camera-hub: " + printable(text) + "\n").c_str(), stderr);
    return static_cast<int>(code);
}

} // namespace

int runProgram(int count, const char* const* texts) {
    try {
        const std::optional<Arguments> arguments = parseArguments(count, texts);
        return arguments ? run(*arguments) : static_cast<int>(ExitCode::Done);
    } catch (const Failure& failure) {
        return tell(failure.what(), failure.code());
    } catch (const std::exception& error) {
        return tell(error.what(), ExitCode::Unexpected);
    }
}

} // namespace CommandLine
