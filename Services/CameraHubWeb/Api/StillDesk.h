#pragma once

#include "Services/CameraHubWeb/Api/EventFeed.h"
#include "Services/CameraHubWeb/Api/Metrics.h"
#include "Services/CameraHubWeb/Http/HttpExchange.h"
#include "Services/CameraHubWeb/Http/Problem.h"
#include "Services/CameraHubWeb/Hub/HubAccess.h"
#include "Services/CameraHubWeb/Stills/StillStore.h"

#include <functional>
#include <memory>
#include <variant>

namespace CameraHubWeb {

/// Takes stills for those who ask for one, keeps them and tells of them. Any thread.
class StillDesk {
public:
    /// A still that is kept now.
    struct Taken {
        std::shared_ptr<const KeptStill> still;
        /// How many were before it in the queue.
        int placeAtFirst = 0;
    };

    /// All outlive this object and what it still waits for.
    StillDesk(HubAccess& hub, StillStore& stills, EventFeed& feed, Metrics& metrics);

    /// Has `answer` called with the still, on any thread, if there is one; answers with the problem if not. If the
    /// client goes before the still has begun, it is not taken.
    void take(const std::shared_ptr<HttpExchange>& exchange, Metrics::Purpose purpose,
              const CameraHub::CaptureRequest& capture, const std::string& ticket,
              std::function<void(HttpExchange&, const Taken&)> answer);

private:
    std::variant<Taken, Problem> finish(TakeResult result, Metrics::Purpose purpose);

    HubAccess& _hub;
    StillStore& _stills;
    EventFeed& _feed;
    Metrics& _metrics;
};

/// What a failure is for people.
Problem problemOf(const TakeFailure& failure);

} // namespace CameraHubWeb
