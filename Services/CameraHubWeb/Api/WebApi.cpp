#include "Services/CameraHubWeb/Api/WebApi.h"

#include "Services/CameraHubWeb/Api/FileAnswer.h"
#include "Services/CameraHubWeb/Api/Json.h"
#include "Services/CameraHubWeb/Api/PictureNames.h"
#include "Services/CameraHubWeb/Api/RequestReading.h"
#include "Services/CameraHubWeb/Http/Problems.h"
#include "Services/CameraHubWeb/Stills/JpegPicture.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <string_view>
#include <thread>
#include <utility>

namespace CameraHubWeb {
namespace {

using Exchange = std::shared_ptr<HttpExchange>;

constexpr std::chrono::seconds betweenSignsOfLife(15);
constexpr auto keptForGood = "private, max-age=31536000, immutable";

/// What reads requests throws their problems; anything else is the server's to answer.
template <typename Answer> void answer(HttpExchange& exchange, Answer answer) {
    try {
        answer();
    } catch (const Refused& refused) {
        exchange.send(problemResponse(refused.problem()));
    }
}

SharedBytes jpegOf(const KeptStill& still, const PictureOptions& options, Metrics& metrics) {
    const auto began = std::chrono::steady_clock::now();
    auto bytes =
        std::make_shared<const std::vector<std::uint8_t>>(encodeJpeg(*still.png, options.width, options.quality));
    metrics.countTime(Metrics::Step::Encode,
                      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - began));
    return bytes;
}

HttpResponse freshPicture(const StillDesk::Taken& taken, SharedBytes bytes, bool isJpeg) {
    const KeptStill& still = *taken.still;
    const std::string name = isJpeg ? withEnding(still.fileName, ".jpg") : still.fileName;
    HttpResponse response;
    response.headers = {{"Content-Type", isJpeg ? "image/jpeg" : "image/png"},
                        {"Cache-Control", "no-store"},
                        {"Content-Disposition", contentDisposition("inline", name)},
                        {"Camera-Hub-Still", still.id},
                        {"Camera-Hub-Queue", std::to_string(taken.placeAtFirst)}};
    if (still.exposure)
        response.headers.emplace_back("Camera-Hub-Exposure", std::to_string(still.exposure->count()) + "us");
    response.length = bytes->size();
    response.body = std::move(bytes);
    return response;
}

} // namespace

WebApi::WebApi(Settings settings)
    : _settings(std::move(settings)), _stills(_settings.keptStills, _settings.keptBytes),
      _workers(std::clamp(std::thread::hardware_concurrency(), 2U, 8U)), _desk(_hub, _stills, _feed, _metrics),
      _streams(_hub, _schedule, _workers, _metrics),
      _hub(_settings.hub, {[this](const HubState& state) { hubChanged(state); },
                           [this](const std::vector<QueueEntry>& queue) {
                               Json::Value json(Json::objectValue);
                               json["queue"] = queueAsJson(queue);
                               _feed.set(EventFeed::Subject::Queue, jsonText(json));
                           }}) {
    aliveEverySoOften();
}

void WebApi::addRoutes(Router& router) {
    addCameraRoutes(router);
    addStillRoutes(router);
    addStateRoutes(router);
}

void WebApi::waitForHub(std::chrono::milliseconds most) {
    std::unique_lock lock(_mutex);
    _hubAnswers.wait_for(lock, most, [this] { return _hasHubAnswered; });
}

void WebApi::addCameraRoutes(Router& router) {
    router.add("GET", {"api", "cameras"}, [this](const Exchange& exchange, const auto&) { cameras(*exchange); });
    router.add("POST", {"api", "cameras", "*", "stills"},
               [this](const Exchange& exchange, const auto& values) { takeStill(exchange, values.at(0)); });
    router.add(
        "GET", {"cameras", "*", "still.png"},
        [this](const Exchange& exchange, const auto& values) { stillByUrl(exchange, values.at(0), false); },
        HeadRequests::Refused);
    router.add(
        "GET", {"cameras", "*", "still.jpg"},
        [this](const Exchange& exchange, const auto& values) { stillByUrl(exchange, values.at(0), true); },
        HeadRequests::Refused);
    router.add(
        "GET", {"cameras", "*", "stream.mjpg"},
        [this](const Exchange& exchange, const auto& values) { stream(*exchange, values.at(0)); },
        HeadRequests::Refused);
}

void WebApi::addStillRoutes(Router& router) {
    router.add("GET", {"api", "stills"}, [this](const Exchange& exchange, const auto&) { keptStills(*exchange); });
    router.add("GET", {"api", "stills", "*"},
               [this](const Exchange& exchange, const auto& values) { keptPicture(exchange, values.at(0)); });
}

void WebApi::addStateRoutes(Router& router) {
    router.add(
        "GET", {"api", "events"}, [this](const Exchange& exchange, const auto&) { events(*exchange); },
        HeadRequests::Refused);
    router.add("GET", {"api", "queue"}, [this](const Exchange& exchange, const auto&) {
        answer(*exchange, [&] {
            checkParameters(exchange->request(), {});
            Json::Value json(Json::objectValue);
            json["queue"] = queueAsJson(_hub.queue());
            exchange->send(jsonResponse(200, json));
        });
    });
    router.add("GET", {"metrics"}, [this](const Exchange& exchange, const auto&) { metrics(*exchange); });
    router.add("GET", {"healthz"}, [this](const Exchange& exchange, const auto&) { health(*exchange); });
}

HubState WebApi::stateOfHub() const {
    HubState state = _hub.state();
    if (!state.isReachable)
        throw Refused(Problems::hubAway(state.detail));
    return state;
}

void WebApi::cameras(HttpExchange& exchange) const {
    answer(exchange, [&] {
        checkParameters(exchange.request(), {});
        const HubState state = stateOfHub();
        Json::Value json(Json::objectValue);
        json["hub"]["host"] = _settings.hub.address.host;
        json["hub"]["version"] = state.version;
        json["cameras"] = camerasAsJson(state.cameras);
        exchange.send(jsonResponse(200, json));
    });
}

void WebApi::takeStill(const Exchange& exchange, const std::string& uid) {
    answer(*exchange, [&] {
        checkParameters(exchange->request(), {});
        const StillOrder order = readStillOrder(exchange->request(), uid);
        _desk.take(exchange, Metrics::Purpose::Api, order.capture, order.ticket,
                   [](HttpExchange& asked, const StillDesk::Taken& taken) {
                       HttpResponse response = jsonResponse(201, stillAsJson(*taken.still));
                       response.headers.emplace_back("Location", "/api/stills/" + taken.still->id + ".png");
                       response.headers.emplace_back("Camera-Hub-Queue", std::to_string(taken.placeAtFirst));
                       asked.send(std::move(response));
                   });
    });
}

void WebApi::stillByUrl(const Exchange& exchange, const std::string& uid, bool isJpeg) {
    answer(*exchange, [&] {
        const HttpRequest& request = exchange->request();
        if (isJpeg)
            checkParameters(request, {"exposure", "percent", "settle", "width", "quality"});
        else
            checkParameters(request, {"exposure", "percent", "settle"});
        const PictureOptions options = readPictureQuery(request);
        _desk.take(exchange, Metrics::Purpose::Url, readCaptureQuery(request, uid), "",
                   [this, exchange, options, isJpeg](HttpExchange& asked, const StillDesk::Taken& taken) {
                       if (!isJpeg)
                           return asked.send(freshPicture(taken, taken.still->png, false));
                       _workers.post([this, exchange, options, taken] {
                           try {
                               exchange->send(freshPicture(taken, jpegOf(*taken.still, options, _metrics), true));
                           } catch (const std::exception& error) {
                               exchange->send(problemResponse(Problems::cameraFailed(error.what())));
                           }
                       });
                   });
    });
}

void WebApi::stream(HttpExchange& exchange, const std::string& uid) {
    answer(exchange, [&] {
        const HttpRequest& request = exchange.request();
        checkParameters(request, {"fps", "exposure", "percent", "settle", "width", "quality"});
        const auto capture = readCaptureQuery(request, uid);
        const PictureOptions options = readPictureQuery(request);
        const double framesPerSecond = readFramesPerSecond(request);
        const HubState state = stateOfHub();
        if (std::ranges::find(state.cameras, uid, &CameraHub::Camera::uid) == state.cameras.end())
            throw Refused(Problems::noSuchCamera());
        HttpResponse head;
        head.headers = {{"Content-Type", LiveStreams::contentType}, {"Cache-Control", "no-store"}};
        exchange.stream(std::move(head), _streams.watch(capture, options, framesPerSecond));
    });
}

void WebApi::keptStills(HttpExchange& exchange) const {
    answer(exchange, [&] {
        checkParameters(exchange.request(), {});
        Json::Value json(Json::objectValue);
        Json::Value& stills = json["stills"] = Json::arrayValue;
        for (const auto& still : _stills.all())
            stills.append(stillAsJson(*still));
        exchange.send(jsonResponse(200, json));
    });
}

void WebApi::keptPicture(const Exchange& exchange, const std::string& name) {
    answer(*exchange, [&] {
        const PictureName parts = splitName(name);
        const bool isJpeg = parts.ending == ".jpg";
        const auto still = isJpeg || parts.ending == ".png" ? _stills.find(parts.id) : nullptr;
        if (!still)
            throw Refused(Problems::notFound("This still is not kept, or not any more."));
        const HttpRequest& request = exchange->request();
        const bool isSaved = request.query.contains("download");
        if (!isJpeg) {
            checkParameters(request, {"download"});
            const FileAnswer file{still->png, "image/png", still->id, keptForGood, isSaved ? still->fileName : ""};
            return exchange->send(answerWithFile(request, file));
        }
        checkParameters(request, {"download", "width", "quality"});
        _workers.post([this, exchange, still, isSaved, options = readPictureQuery(request)] {
            try {
                const FileAnswer file{jpegOf(*still, options, _metrics), "image/jpeg", tagOf(*still, options),
                                      keptForGood, isSaved ? withEnding(still->fileName, ".jpg") : ""};
                exchange->send(answerWithFile(exchange->request(), file));
            } catch (const std::exception& error) {
                exchange->send(problemResponse(Problems::cameraFailed(error.what())));
            }
        });
    });
}

void WebApi::events(HttpExchange& exchange) {
    answer(exchange, [&] {
        checkParameters(exchange.request(), {});
        HttpResponse head;
        head.headers = {{"Content-Type", "text/event-stream"}, {"Cache-Control", "no-store"}};
        exchange.stream(std::move(head), _feed.subscribe());
    });
}

void WebApi::health(HttpExchange& exchange) const {
    answer(exchange, [&] {
        checkParameters(exchange.request(), {});
        stateOfHub();
        Json::Value json(Json::objectValue);
        json["hub"] = "reachable";
        exchange.send(jsonResponse(200, json));
    });
}

void WebApi::metrics(HttpExchange& exchange) const {
    answer(exchange, [&] {
        checkParameters(exchange.request(), {});
        HttpResponse response = textResponse(200, "text/plain; version=0.0.4; charset=utf-8", _metrics.report(now()));
        response.headers.emplace_back("Cache-Control", "no-store");
        exchange.send(std::move(response));
    });
}

MetricsNow WebApi::now() const {
    MetricsNow now;
    now.hub = _hub.state();
    now.queueLength = _hub.queue().size();
    now.keptStills = _stills.all().size();
    now.keptBytes = _stills.bytes();
    now.eventListeners = _feed.listeners();
    now.streamViewers = _streams.viewers();
    return now;
}

void WebApi::hubChanged(const HubState& state) {
    Json::Value hub(Json::objectValue);
    hub["reachable"] = state.isReachable;
    if (state.isReachable)
        hub["version"] = state.version;
    else
        hub["detail"] = state.detail;
    _feed.set(EventFeed::Subject::Hub, jsonText(hub));
    Json::Value cameras(Json::objectValue);
    cameras["cameras"] = camerasAsJson(state.cameras);
    _feed.set(EventFeed::Subject::Cameras, jsonText(cameras));
    if (state.isReachable) {
        const std::lock_guard lock(_mutex);
        _hasHubAnswered = true;
        _hubAnswers.notify_all();
    }
}

void WebApi::aliveEverySoOften() {
    _schedule.at(std::chrono::steady_clock::now() + betweenSignsOfLife, [this] {
        _feed.tellAlive();
        aliveEverySoOften();
    });
}

} // namespace CameraHubWeb
