#include "Tools/CameraHub/Commands/ListCommand.h"

#include "Tools/CameraHub/Terminal/Terminal.h"
#include "Tools/Text/ExposureText.h"
#include "Tools/Text/Table.h"
#include "Tools/Text/TerminalText.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace CommandLine {
namespace {

using CameraHub::Camera;
using Cameras = std::vector<Camera>;

constexpr std::chrono::seconds watchInterval(1);

Json::Value asJson(const Cameras& cameras) {
    Json::Value list(Json::arrayValue);
    for (const Camera& camera : cameras) {
        Json::Value& entry = list.append(Json::Value(Json::objectValue));
        entry["number"] = list.size();
        entry["uid"] = camera.uid;
        entry["make"] = camera.make;
        entry["model"] = camera.model;
        entry["width"] = camera.resolution.width;
        entry["height"] = camera.resolution.height;
        entry["shortestExposureInUs"] = Json::Int64(camera.shortestExposure.count());
        entry["longestExposureInUs"] = Json::Int64(camera.longestExposure.count());
    }
    return list;
}

std::string asTable(const Cameras& cameras) {
    Table table({{"No.", true},
                 {"Make", false, true},
                 {"Model", false, true},
                 {"Resolution", true},
                 {"Exposure"},
                 {"Uid", false, true}});
    int number = 0;
    for (const Camera& camera : cameras)
        table.add({std::to_string(++number), printable(camera.make), printable(camera.model),
                   std::to_string(camera.resolution.width) + "x" + std::to_string(camera.resolution.height),
                   exposureRangeText(camera.shortestExposure, camera.longestExposure), printable(camera.uid)});
    const std::optional<TerminalSize> terminal = terminalSize(STDOUT_FILENO);
    return table.text(terminal ? std::optional(terminal->columns) : std::nullopt);
}

bool isSame(const Camera& one, const Camera& other) {
    const auto members = [](const Camera& camera) {
        return std::tie(camera.uid, camera.make, camera.model, camera.resolution.width, camera.resolution.height,
                        camera.shortestExposure, camera.longestExposure);
    };
    return members(one) == members(other);
}

/// On a terminal each table takes the place of the one before.
void watch(const Session& session, CameraHub::CameraHubClient& client) {
    std::optional<Cameras> shown;
    std::ptrdiff_t lines = 0;
    for (;; session.interruption().waitUntil(std::chrono::steady_clock::now() + watchInterval)) {
        Cameras cameras = client.discover();
        if (shown && std::ranges::equal(*shown, cameras, isSame))
            continue;
        if (session.options().isJson) {
            Session::printJson(asJson(cameras), true);
        } else {
            const std::string table = asTable(cameras);
            const bool isInPlace = shown && terminalSize(STDOUT_FILENO);
            Session::print((isInPlace ? "\x1b[" + std::to_string(lines) + "A\x1b[J" : shown ? "\n" : "") + table);
            lines = std::ranges::count(table, '\n');
        }
        shown = std::move(cameras);
    }
}

} // namespace

void list(const Session& session, const ListOptions& options) {
    CameraHub::CameraHubClient client = session.connect();
    if (options.isWatching)
        return watch(session, client);
    const Cameras cameras = [&] {
        const Progress progress = session.waitFor("the list of cameras");
        return client.discover();
    }();
    if (session.options().isJson)
        return Session::printJson(asJson(cameras));
    Session::print(asTable(cameras));
    if (cameras.empty())
        session.note("the hub has no camera; plug one in and see it come with: camera-hub list --watch");
}

} // namespace CommandLine
