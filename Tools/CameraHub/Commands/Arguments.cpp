#include "Tools/CameraHub/Commands/Arguments.h"

#include "Tools/CameraHub/Commands/ArgumentReading.h"
#include "Tools/CameraHub/Terminal/ExitCode.h"
#include "Tools/Text/DurationText.h"

#include <algorithm>
#include <sstream>

namespace CommandLine {
namespace {

using std::chrono::milliseconds;

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

constexpr auto cameraHelp = "Its number in the list, its uid, or a part\nof its name; without it the first";
constexpr auto settleHelp = "How long the hub waits after a change of the\nexposure (default: 250ms)";
constexpr auto exposureHelp = "20ms, 1/50s, 20000us (default: 50ms); the\ncamera takes the nearest that it has";
constexpr auto percentHelp =
    "The exposure within the camera's range, in\nstops: 100 is the longest, 50 one stop below\n"
    "it, 0 the shortest";
constexpr auto outputHelp = "A file, a folder, or - for standard output;\nwithout it a new file here, named by camera\n"
                            "and time";
constexpr auto everyHelp = "From the beginning of one still to that of\nthe next: 10s, 2min (default: 0)";
constexpr auto showHelp = "Draw the picture in the terminal, with its\nhistogram and the shares of pixels that are\n"
                          "too bright and too dark";
constexpr auto folderHelp = "The folder (required), on the hub's machine,\nfrom its root; it has Diagnostics in its\n"
                            "path, and the folders logs and Traces in its\nfolder LarkspurWindowsCameraHub";
constexpr auto timeoutHelp = "How long it may take (default: 60s, as\ncaptures of other clients come first)";

void addGlobalOptions(CLI::App& app, GlobalOptions& options) {
    app.add_option("--host", options.address.host, "The machine of the hub (default: localhost)")->option_text("HOST");
    addPort(app, "--port", options.address.messagePort, "The hub's port for messages (default: 3141)");
    addPort(app, "--image-port", options.address.imagePort, "The hub's port for images (default: 3142)");
    app.add_flag("--json", options.isJson, "Print one JSON value instead of text");
    app.add_flag("-q,--quiet", options.isQuiet, "Print no notes and no progress; results and\nerrors remain");
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
    command.add_option("-c,--camera", options.camera, cameraHelp)->option_text("CAMERA");
    CLI::Option* const exposure =
        addExposure(command, "-e,--exposure", exposureHelp, [&options](auto time) { options.exposure = time; });
    command.add_option("-p,--percent", options.percent, percentHelp)
        ->option_text("P")
        ->check(CLI::Range(0, 100))
        ->excludes(exposure);
    addDuration(command, "--settle", settleHelp, milliseconds(0), CameraHub::CaptureRequest::longestSettle,
                options.settle);
    command.add_option("-o,--output", options.output, outputHelp)->option_text("FILE");
    command.add_option("-n,--count", options.count, "How many stills (default: 1); -o is then a folder")
        ->option_text("N")
        ->check(CLI::Range(1, 1000000));
    addDuration(command, "--every", everyHelp, milliseconds(0), longestDuration, options.every);
    command.add_flag("--show", options.isShown, showHelp);
}

void addBracket(CLI::App& app, Arguments& arguments, BracketOptions& options) {
    CLI::App& command =
        addCommand(app, arguments, options, "bracket", "Take one still a stop, and make a contact sheet");
    command.add_option("-c,--camera", options.camera, cameraHelp)->option_text("CAMERA");
    addExposure(command, "--from", "The shortest exposure: 1ms, 1/1000s (required)", [&options](auto time) {
        options.from = time;
    })->required();
    addExposure(command, "--to", "The longest exposure: 500ms, 1/2s (required)", [&options](auto time) {
        options.to = time;
    })->required();
    addDuration(command, "--settle", settleHelp, milliseconds(0), CameraHub::CaptureRequest::longestSettle,
                options.settle);
    command.add_option("-o,--output", options.output, "The folder for the files; without it this one")
        ->option_text("FOLDER");
}

void addOthers(CLI::App& app, Arguments& arguments, AllOptions& options) {
    addCommand(app, arguments, options.version, "version", "Print the versions of the hub and of this program");
    CLI::App& diagnostics =
        addCommand(app, arguments, options.diagnostics, "diagnostics", "Have the hub's logs written to a folder");
    diagnostics.add_option("--to", options.diagnostics.folder, folderHelp)->option_text("FOLDER")->required();
    CLI::App& health = addCommand(app, arguments, options.health, "health", "Tell whether the hub answers");
    addDuration(health, "--timeout", timeoutHelp, milliseconds(1), longestDuration, options.health.timeout);
}

/// The first line of what the library says of a wrong line.
Failure usageFailure(const CLI::App& app, const CLI::ParseError& error) {
    const auto commands = app.get_subcommands();
    std::string text = error.what();
    if (commands.empty() && dynamic_cast<const CLI::RequiredError*>(&error))
        text = app.remaining_size() == 0 ? "no command is given" : "there is no command " + app.remaining().front();
    text.erase(std::min(text.find('\n'), text.size()));
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
    app.get_formatter()->column_width(30);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.get_formatter()->label("Subcommands", "Commands");
    addGlobalOptions(app, arguments.global);
    addCommand(app, arguments, options.list, "list", "Print the cameras as a table")
        .add_flag("-w,--watch", options.list.isWatching, "Print them again whenever they change,\nuntil Ctrl-C");
    addCapture(app, arguments, options.capture);
    addBracket(app, arguments, options.bracket);
    CLI::App& find = addCommand(app, arguments, options.find, "find", "Print the hubs of this network");
    addDuration(find, "--timeout", "How long to look at most (default: 5s)", milliseconds(1), longestDuration,
                options.find.timeout);
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
