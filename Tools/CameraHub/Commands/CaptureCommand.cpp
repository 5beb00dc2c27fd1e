#include "Tools/CameraHub/Commands/CaptureCommand.h"

#include "Tools/CameraHub/Commands/StillTaking.h"
#include "Tools/CameraHub/Picture/Histogram.h"
#include "Tools/CameraHub/Picture/TerminalPicture.h"
#include "Tools/CameraHub/Terminal/ExitCode.h"
#include "Tools/CameraHub/Terminal/OutputFile.h"
#include "Tools/CameraHub/Terminal/Terminal.h"
#include "Tools/Text/StillFileName.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <variant>

namespace CommandLine {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;

constexpr auto standardOutput = "-";
constexpr int linesBelowPicture = 4; // histogram, path, note, prompt
constexpr int columnsOfHistogram = 64;

bool isFolder(const CaptureOptions& options) {
    std::error_code whatIsThere; // is none where nothing can be seen, which writing tells
    return options.output.empty() || options.output.ends_with('/') || options.count > 1 ||
           fs::is_directory(options.output, whatIsThere);
}

/// The path of the file that was written; none for standard output.
std::string save(const CaptureOptions& options, const CameraHub::Camera& camera, const CameraHub::Still& still) {
    if (options.output == standardOutput) {
        Session::print(still.png);
        return {};
    }
    if (!isFolder(options)) {
        writeFile(options.output, still.png);
        return options.output;
    }
    makeFolder(options.output.empty() ? "." : options.output);
    return writeNewFile(options.output, stillFileName(camera, std::chrono::system_clock::now()), ".png", still.png)
        .string();
}

void show(const CameraHub::Still& still) {
    const RgbPicture picture = decodePng(still.png);
    const Histogram histogram(picture);
    TerminalSize size = terminalSize(STDOUT_FILENO).value_or(TerminalSize());
    size.rows = std::max(size.rows - linesBelowPicture, 1);
    const std::string shares =
        "  too bright: " + shareText(histogram.tooBright()) + ", too dark: " + shareText(histogram.tooDark());
    const int columns = std::clamp(size.columns - static_cast<int>(shares.size()) - 1, 8, columnsOfHistogram);
    Session::print(drawInTerminal(picture, size, coloursOfTerminal()) + histogram.line(columns) + shares + "\n");
}

std::variant<std::chrono::microseconds, CameraHub::Percent> exposureOf(const CaptureOptions& options) {
    if (options.percent)
        return CameraHub::Percent(*options.percent);
    return options.exposure.value_or(std::get<std::chrono::microseconds>(CameraHub::CaptureRequest().exposure));
}

} // namespace

void checkOptions(const CaptureOptions& options, bool isJson) {
    const bool isToOutput = options.output == standardOutput;
    if (isToOutput && options.isShown)
        throw Failure(ExitCode::Usage, "-o - and --show both want standard output: give -o a file");
    if (isToOutput && isJson)
        throw Failure(ExitCode::Usage, "-o - and --json both want standard output: give -o a file");
    if (isToOutput && options.count > 1)
        throw Failure(ExitCode::Usage, "-o - takes one still: give -o a folder for several");
    if (isJson && options.isShown)
        throw Failure(ExitCode::Usage, "--json and --show both want standard output: leave one of them out");
    if (isToOutput && isatty(STDOUT_FILENO) != 0)
        throw Failure(ExitCode::Usage, "a terminal cannot show a PNG file: give -o a file, or take --show");
}

void capture(const Session& session, const CaptureOptions& options) {
    checkOptions(options, session.options().isJson);
    StillTaking taking(session, options.camera, options.settle);
    Json::Value stills(Json::arrayValue);
    std::string lastNote;
    const steady_clock::time_point start = steady_clock::now();
    for (int number = 0; number < options.count; ++number) {
        if (number > 0) {
            const Progress progress = session.waitFor("the time of still " + std::to_string(number + 1) + " of " +
                                                      std::to_string(options.count));
            session.interruption().waitUntil(start + number * options.every);
        }
        const CameraHub::Still still = taking.take(exposureOf(options));
        const std::string file = save(options, taking.camera(), still);
        if (options.isShown)
            show(still);
        if (session.options().isJson)
            stills.append(stillAsJson(still, file));
        else if (!file.empty())
            Session::print(file + "\n");
        const std::string note = exposureNote(options.exposure, still.capture.exposure);
        if (!note.empty() && note != lastNote)
            session.note(note);
        lastNote = note;
    }
    if (session.options().isJson) {
        Json::Value result(Json::objectValue);
        result["camera"] = taking.camera().uid;
        result["stills"] = stills;
        Session::printJson(result);
    }
}

} // namespace CommandLine
