#pragma once

#include "Services/CameraHubWeb/Api/EventFeed.h"
#include "Services/CameraHubWeb/Api/LiveStreams.h"
#include "Services/CameraHubWeb/Api/Metrics.h"
#include "Services/CameraHubWeb/Api/Schedule.h"
#include "Services/CameraHubWeb/Api/StillDesk.h"
#include "Services/CameraHubWeb/Api/Workers.h"
#include "Services/CameraHubWeb/Http/HttpExchange.h"
#include "Services/CameraHubWeb/Http/Router.h"
#include "Services/CameraHubWeb/Hub/HubAccess.h"
#include "Services/CameraHubWeb/Stills/StillStore.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

namespace CameraHubWeb {

/// What programs and the page ask for: cameras, stills, streams, events, and how things are. The server that uses its
/// routes ends before it does.
class WebApi {
public:
    struct Settings {
        HubAccess::Settings hub;
        std::size_t keptStills = 32;
        std::size_t keptBytes = std::size_t(256) * 1024 * 1024;
    };

    explicit WebApi(Settings settings);

    WebApi(const WebApi&) = delete;
    WebApi& operator=(const WebApi&) = delete;

    void addRoutes(Router& router);

    /// Waits for the hub's first answer, for at most that long: else who comes at the start is told that it is away.
    void waitForHub(std::chrono::milliseconds most);

private:
    void addCameraRoutes(Router& router);
    void addStillRoutes(Router& router);
    void addStateRoutes(Router& router);

    /// Throws Refused where the hub does not answer.
    HubState stateOfHub() const;

    void cameras(HttpExchange& exchange) const;
    void takeStill(const std::shared_ptr<HttpExchange>& exchange, const std::string& uid);
    void stillByUrl(const std::shared_ptr<HttpExchange>& exchange, const std::string& uid, bool isJpeg);
    void stream(HttpExchange& exchange, const std::string& uid);
    void keptStills(HttpExchange& exchange) const;
    void keptPicture(const std::shared_ptr<HttpExchange>& exchange, const std::string& name);
    void events(HttpExchange& exchange);
    void health(HttpExchange& exchange) const;
    void metrics(HttpExchange& exchange) const;

    void hubChanged(const HubState& state);
    void aliveEverySoOften();
    MetricsNow now() const;

    const Settings _settings;
    std::mutex _mutex;
    std::condition_variable _hubAnswers;
    bool _hasHubAnswered = false;
    Metrics _metrics;
    EventFeed _feed;
    StillStore _stills;
    Workers _workers;
    Schedule _schedule;
    StillDesk _desk;
    LiveStreams _streams;
    HubAccess _hub; // the last one: it calls back into the others until it has gone
};

} // namespace CameraHubWeb
