#include "Tools/CameraHub/Commands/Arguments.h"

#include "Tools/CameraHub/Commands/ArgumentReading.h"
#include "Tools/CameraHub/Terminal/ExitCode.h"
#include "Tools/CameraHub/Text/DurationText.h"

#include <algorithm>
#include <sstream>

namespace CommandLine {
namespace {

constexpr auto description = "Lists the cameras of a Camera Hub, and takes stills.";

constexpr auto footer = R"(Examples:
  camera-hub list
  camera-hub capture --exposure 1/50s -o picture.png
  camera-hub capture --camera desk --percent 50 --show
  camera-hub capture --count 6 --every 10s -o stills/
  camera-hub bracket --from 1ms --to 500ms -o bracket/
  camera-hub --host lab.example health --timeout 10s
camera-hub COMMAND --help tells the options of a command.

Exit codes: 0 done, 1 unexpected, 2 wrong usage, 3 no hub, 4 no such camera,
5 the capture failed, 6 too late, 7 not written, 8 refused, 9 nothing found,
130 ended by Ctrl-C.)";

constexpr auto footerOfCommand = "Further options, of all commands: camera-hub --help";

constexpr auto cameraHelp = "Its number in the list, its uid, or a part of its name; without it the first";
constexpr auto settleHelp = "How long the hub waits after a change of the exposure (default: 250ms)";

void addGlobalOptions(CLI::App& app, GlobalOptions& options) {
    app.add_option("--host", options.address.host, "The machine of the hub (default: localhost)")->type_name("HOST");
    addPort(app, "--port", options.address.messagePort, "The hub's port for messages (default: 3141)");
    addPort(app, "--image-port", options.address.imagePort, "The hub's port for images (default: 3142)");
    app.add_flag("--json", options.isJson, "Print one JSON value instead of text");
    app.add_flag("-q,--quiet", options.isQuiet, "Print no notes and no progress; results and errors remain");
    app.set_version_flag("--version", "camera-hub " PROGRAM_VERSION, "Print the version of this program and end");
}

/// A command whose options, once it was given, are those of the arguments.
template <typename Options> CLI::App& addCommand(CLI::App& app, Arguments& arguments, Options& options,
                                                 const char* name, const char* help) {
    CLI::App& command = *app.add_subcommand(name, help);
    command.footer(footerOfCommand);
    command.fallthrough();
    command.final_callback([&arguments, &options] { arguments.command = options; });
    return command;
}

/// Where the options of all commands are put.
struct AllOptions {
    ListOptions list;
    CaptureOptions capture;
    BracketOptions bracket;
    FindOptions find;
    VersionOptions version;
    DiagnosticsOptions diagnostics;
    HealthOptions health;
};

void addCapture(CLI::App& app, Arguments& arguments, CaptureOptions& options) {
    CLI::App& command = addCommand(app, arguments, options, "capture", "Take stills, and save them as PNG files");
    command.add_option("-c,--camera", options.camera, cameraHelp)->type_name("CAMERA");
    CLI::Option* const exposure =
        addExposure(command, "-e,--exposure", "20ms, 1/50s, 20000us (default: 50ms); the camera takes the nearest",
                    [&options](auto time) { options.exposure = time; });
    command
        .add_option("-p,--percent", options.percent,
                    "The exposure within the camera's range, in stops: 100 is the "
                    "longest, 50 one stop below it, 0 the shortest")
        ->type_name("P")
        ->check(CLI::Range(0, 100))
        ->excludes(exposure);
    addDuration(command, "--settle", settleHelp, CameraHub::CaptureRequest::longestSettle, options.settle);
    command
        .add_option("-o,--output", options.output,
                    "A file, a folder, or - for standard output; without it a new "
                    "file here, named by camera and time")
        ->type_name("FILE");
    command.add_option("-n,--count", options.count, "How many stills (default: 1); -o is then a folder")
        ->type_name("N")
        ->check(CLI::Range(1, 1000000));
    addDuration(command, "--every", "From the beginning of one still to that of the next: 10s, 2min (default: 0)",
                longestDuration, options.every);
    command.add_flag("--show", options.isShown,
                     "Draw the picture in the terminal, with its histogram and the shares "
                     "of pixels that are too bright and too dark");
}

void addBracket(CLI::App& app, Arguments& arguments, BracketOptions& options) {
    CLI::App& command =
        addCommand(app, arguments, options, "bracket", "Take one still a stop, and make a contact sheet of them");
    command.add_option("-c,--camera", options.camera, cameraHelp)->type_name("CAMERA");
    addExposure(command, "--from", "The shortest exposure: 1ms, 1/1000s", [&options](auto time) {
        options.from = time;
    })->required();
    addExposure(command, "--to", "The longest exposure: 500ms, 1/2s", [&options](auto time) {
        options.to = time;
    })->required();
    addDuration(command, "--settle", settleHelp, CameraHub::CaptureRequest::longestSettle, options.settle);
    command.add_option("-o,--output", options.output, "The folder for the files; without it this one")
        ->type_name("FOLDER");
}

void addOthers(CLI::App& app, Arguments& arguments, AllOptions& options) {
    addCommand(app, arguments, options.version, "version", "Print the versions of the hub and of this program");
    CLI::App& diagnostics = addCommand(app, arguments, options.diagnostics, "diagnostics",
                                       "Have the hub's logs written to a folder until Ctrl-C");
    diagnostics
        .add_option("--to", options.diagnostics.folder,
                    "The folder, on the hub's machine, from its root; it has "
                    "Diagnostics in its path, and the folders logs and Traces in "
                    "its folder LarkspurWindowsCameraHub")
        ->type_name("FOLDER")
        ->required();
    CLI::App& health =
        addCommand(app, arguments, options.health, "health", "Tell whether the hub answers; the exit code says it");
    addDuration(health, "--timeout", "How long it may take (default: 60s, as captures of other clients come first)",
                longestDuration, options.health.timeout);
}

/// The first line of what the library says of a wrong line.
Failure usageFailure(const CLI::App& app, const CLI::ParseError& error) {
    std::string text = error.what();
    text.erase(std::min(text.find('\n'), text.size()));
    const auto commands = app.get_subcommands();
    const std::string command = commands.empty() ? "" : " " + commands.front()->get_name();
    return {ExitCode::Usage, text + "; see: camera-hub" + command + " --help"};
}

} // namespace

std::optional<Arguments> parseArguments(int count, const char* const* texts) {
    Arguments arguments;
    AllOptions options;
    CLI::App app(description, "camera-hub");
    app.require_subcommand(1);
    app.footer(footer);
    app.get_formatter()->column_width(28);
    addGlobalOptions(app, arguments.global);
    addCommand(app, arguments, options.list, "list", "Print the cameras as a table")
        .add_flag("-w,--watch", options.list.isWatching, "Print them again whenever they change, until Ctrl-C");
    addCapture(app, arguments, options.capture);
    addBracket(app, arguments, options.bracket);
    CLI::App& find = addCommand(app, arguments, options.find, "find", "Print the hubs of this network");
    addDuration(find, "--timeout", "How long to look at most (default: 5s)", longestDuration, options.find.timeout);
    addOthers(app, arguments, options);
    try {
        app.parse(count, texts);
    } catch (const CLI::Success& asked) {
        std::ostringstream output;
        app.exit(asked, output, output);
        Session::print(output.str());
        return std::nullopt;
    } catch (const CLI::ParseError& error) {
        throw usageFailure(app, error);
    }
    return arguments;
}

} // namespace CommandLine
