#include "Services/CameraHubWeb/Api/Json.h"

#include "Tools/Text/CameraChoice.h"
#include "Tools/Text/ExposureText.h"
#include "Tools/Text/TerminalText.h"
#include "Tools/Text/TimeText.h"

#include <json/writer.h>

#include <cmath>

namespace CameraHubWeb {
namespace {

using std::chrono::microseconds;

constexpr double microsecondsOfSecond = 1e6;

/// Names come from devices, and uids are sent back as they are: only what is for people is mended.
std::string forPeople(const std::string& text) { return CommandLine::printable(text); }

double milliseconds(microseconds time) { return static_cast<double>(time.count()) / 1e3; }

Json::Value count(microseconds time) { return Json::Value(static_cast<Json::Int64>(time.count())); }

Json::Value askedAsJson(const KeptStill& still) {
    Json::Value asked(Json::objectValue);
    if (const auto* exposure = std::get_if<microseconds>(&still.asked))
        asked["exposureUs"] = count(*exposure);
    else
        asked["percent"] = std::get<int>(still.asked);
    return asked;
}

const char* nameOf(TakeStep step) {
    switch (step) {
    case TakeStep::Waiting:
        return "waiting";
    case TakeStep::Opening:
        return "opening";
    case TakeStep::Taking:
        return "taking";
    case TakeStep::Fetching:
        break;
    }
    return "fetching";
}

/// log2 of the nearest power of two of a second.
int stopOf(microseconds exposure) {
    return static_cast<int>(std::lround(std::log2(static_cast<double>(exposure.count()) / microsecondsOfSecond)));
}

} // namespace

std::vector<microseconds> wholeStops(const CameraHub::Camera& camera) {
    std::vector<microseconds> stops;
    if (camera.shortestExposure == camera.longestExposure || camera.shortestExposure.count() <= 0)
        return stops;
    for (int stop = stopOf(camera.shortestExposure); stop <= stopOf(camera.longestExposure); ++stop) {
        const microseconds exposure(std::llround(std::ldexp(microsecondsOfSecond, stop)));
        if (exposure.count() > 0 && exposure <= CameraHub::CaptureRequest::longestExposure)
            stops.push_back(exposure);
    }
    return stops;
}

Json::Value cameraAsJson(const CameraHub::Camera& camera) {
    Json::Value json(Json::objectValue);
    json["uid"] = camera.uid;
    json["name"] = forPeople(CommandLine::cameraName(camera));
    json["make"] = forPeople(camera.make);
    json["model"] = forPeople(camera.model);
    json["width"] = camera.resolution.width;
    json["height"] = camera.resolution.height;
    json["shortestExposureUs"] = count(camera.shortestExposure);
    json["longestExposureUs"] = count(camera.longestExposure);
    json["exposureRange"] = CommandLine::exposureRangeText(camera.shortestExposure, camera.longestExposure);
    Json::Value& stops = json["stops"] = Json::arrayValue;
    for (const microseconds exposure : wholeStops(camera)) {
        Json::Value stop(Json::objectValue);
        stop["us"] = count(exposure);
        stop["text"] = CommandLine::shortExposureText(exposure);
        stops.append(stop);
    }
    return json;
}

Json::Value camerasAsJson(const std::vector<CameraHub::Camera>& cameras) {
    Json::Value json(Json::arrayValue);
    for (const CameraHub::Camera& camera : cameras)
        json.append(cameraAsJson(camera));
    return json;
}

Json::Value stillAsJson(const KeptStill& still) {
    Json::Value json(Json::objectValue);
    json["id"] = still.id;
    json["uid"] = still.uid;
    json["camera"] = forPeople(still.camera);
    json["takenAt"] = CommandLine::utcText(still.takenAt, "%Y-%m-%dT%H:%M:%S");
    json["width"] = still.width;
    json["height"] = still.height;
    json["bytes"] = static_cast<Json::UInt64>(still.png->size());
    json["asked"] = askedAsJson(still);
    json["exposureUs"] = still.exposure ? count(*still.exposure) : Json::Value();
    json["exposureText"] = still.exposure ? Json::Value(CommandLine::exposureText(*still.exposure)) : Json::Value();
    json["wasTakenTwice"] = still.wasTakenTwice;
    json["fileName"] = still.fileName;
    json["png"] = "/api/stills/" + still.id + ".png";
    json["jpeg"] = "/api/stills/" + still.id + ".jpg";
    Json::Value& durations = json["durations"] = Json::objectValue;
    durations["queueMs"] = milliseconds(still.queueTime);
    durations["captureMs"] = milliseconds(still.captureTime);
    durations["fetchMs"] = milliseconds(still.fetchTime);
    return json;
}

Json::Value queueAsJson(const std::vector<QueueEntry>& queue) {
    const auto now = std::chrono::steady_clock::now();
    Json::Value json(Json::arrayValue);
    for (const QueueEntry& entry : queue) {
        Json::Value item(Json::objectValue);
        item["ticket"] = entry.ticket.empty() ? Json::Value() : Json::Value(entry.ticket);
        item["uid"] = entry.uid;
        item["place"] = entry.place;
        item["state"] = nameOf(entry.step);
        item["forMs"] =
            static_cast<Json::Int64>(std::chrono::floor<std::chrono::milliseconds>(now - entry.since).count());
        json.append(item);
    }
    return json;
}

std::string jsonText(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    builder["precision"] = 9;
    return Json::writeString(builder, value);
}

HttpResponse jsonResponse(int status, const Json::Value& value) {
    HttpResponse response = textResponse(status, "application/json", jsonText(value) + "\n");
    response.headers.emplace_back("Cache-Control", "no-store");
    return response;
}

} // namespace CameraHubWeb
