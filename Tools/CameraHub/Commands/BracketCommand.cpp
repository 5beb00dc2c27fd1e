#include "Tools/CameraHub/Commands/BracketCommand.h"

#include "Tools/CameraHub/Commands/StillTaking.h"
#include "Tools/CameraHub/Picture/ContactSheet.h"
#include "Tools/CameraHub/Terminal/ExitCode.h"
#include "Tools/CameraHub/Terminal/OutputFile.h"
#include "Tools/Text/ExposureText.h"
#include "Tools/Text/StillFileName.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>

namespace CommandLine {
namespace {

using std::chrono::microseconds;

const double halfStop = std::sqrt(2.0);

/// "_03_15625us": the names of one bracket sort by it. Without an exposure that is known, the number alone.
std::string endOfName(std::size_t number, std::optional<microseconds> exposure) {
    std::array<char, 16> text{};
    (void)std::snprintf(text.data(), text.size(), "_%02zu", number);
    return text.data() + (exposure ? "_" + std::to_string(exposure->count()) + "us" : "");
}

std::vector<microseconds> stopsOfCamera(const BracketOptions& options, const CameraHub::Camera& camera) {
    if (options.from > options.to)
        throw Failure(ExitCode::Usage, "--from is the shorter exposure, --to the longer one: exchange them");
    std::vector<microseconds> exposures = stops(options.from, options.to, camera);
    if (exposures.empty())
        throw Failure(ExitCode::Usage, "the camera has no exposure in that range; it has: " +
                                           exposureRangeText(camera.shortestExposure, camera.longestExposure));
    return exposures;
}

} // namespace

std::vector<microseconds> stops(microseconds from, microseconds to, const CameraHub::Camera& camera) {
    const auto lowest = static_cast<double>(camera.shortestExposure.count()) / halfStop;
    const auto highest = static_cast<double>(std::min(to, CameraHub::CaptureRequest::longestExposure).count());
    const auto longest = static_cast<double>(camera.longestExposure.count());
    std::vector<microseconds> exposures;
    for (auto exposure = static_cast<double>(from.count());
         exposure <= std::min(highest, longest) * halfStop &&
         exposure <= static_cast<double>(CameraHub::CaptureRequest::longestExposure.count());
         exposure *= 2)
        if (exposure >= lowest)
            exposures.emplace_back(static_cast<std::int64_t>(std::llround(exposure)));
    return exposures;
}

void bracket(const Session& session, const BracketOptions& options) {
    StillTaking taking(session, options.camera, options.settle);
    const std::vector<microseconds> exposures = stopsOfCamera(options, taking.camera());
    const std::string name = stillFileName(taking.camera(), std::chrono::system_clock::now());
    makeFolder(options.output.empty() ? "." : options.output);
    const bool isJson = session.options().isJson;
    ContactSheet sheet;
    Json::Value stills(Json::arrayValue);
    for (const microseconds asked : exposures) {
        const CameraHub::Still still = taking.take(asked);
        const std::optional<microseconds> inForce = still.capture.exposure;
        const std::string file =
            writeNewFile(options.output, name + endOfName(stills.size() + 1, inForce), ".png", still.png).string();
        if (!isJson)
            Session::print(file + "\n");
        stills.append(stillAsJson(still, file));
        sheet.add(decodePng(still.png), inForce ? exposureText(*inForce) : "exposure not known");
    }
    const std::string sheetFile = writeNewFile(options.output, name + "_contact-sheet", ".png", sheet.png()).string();
    if (!isJson)
        return Session::print(sheetFile + "\n");
    Json::Value result(Json::objectValue);
    result["camera"] = taking.camera().uid;
    result["stills"] = stills;
    result["contactSheet"] = sheetFile;
    Session::printJson(result);
}

} // namespace CommandLine
