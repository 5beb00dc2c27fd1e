#include "Services/CameraHubWeb/Api/StillDesk.h"

#include "Services/CameraHubWeb/Api/Json.h"
#include "Services/CameraHubWeb/Http/Problems.h"
#include "Services/CameraHubWeb/Stills/JpegPicture.h"
#include "Tools/Text/CameraChoice.h"
#include "Tools/Text/StillFileName.h"

#include <exception>
#include <utility>

namespace CameraHubWeb {
namespace {

/// Throws BrokenPicture.
std::shared_ptr<const KeptStill> keptStill(TakenStill taken) {
    auto still = std::make_shared<KeptStill>();
    const PictureSize size = pngSize(taken.still.png);
    still->id = newStillId();
    still->uid = taken.camera.uid;
    still->camera = CommandLine::cameraName(taken.camera);
    still->takenAt = taken.takenAt;
    still->width = size.width;
    still->height = size.height;
    if (const auto* percent = std::get_if<CameraHub::Percent>(&taken.request.capture.exposure))
        still->asked = percent->value;
    else
        still->asked = std::get<std::chrono::microseconds>(taken.request.capture.exposure);
    still->exposure = taken.still.capture.exposure;
    still->wasTakenTwice = taken.still.wasTakenTwice;
    still->fileName = CommandLine::stillFileName(taken.camera, taken.takenAt) + ".png";
    still->queueTime = taken.queueTime;
    still->captureTime = taken.captureTime;
    still->fetchTime = taken.fetchTime;
    still->png = std::make_shared<const std::vector<std::uint8_t>>(std::move(taken.still.png));
    return still;
}

} // namespace

Problem problemOf(const TakeFailure& failure) {
    switch (failure.kind) {
    case TakeFailureKind::QueueFull:
        return Problems::queueFull();
    case TakeFailureKind::NoSuchCamera:
        return Problems::noSuchCamera();
    case TakeFailureKind::CameraFailed:
        return Problems::cameraFailed(failure.detail);
    case TakeFailureKind::HubTimeout:
        return Problems::hubTimeout(failure.detail);
    case TakeFailureKind::HubUnusable:
        return Problems::hubUnusable(failure.detail);
    case TakeFailureKind::HubAway:
    case TakeFailureKind::Ended:
        break;
    }
    return Problems::hubAway(failure.detail);
}

StillDesk::StillDesk(HubAccess& hub, StillStore& stills, EventFeed& feed, Metrics& metrics)
    : _hub(hub), _stills(stills), _feed(feed), _metrics(metrics) {}

void StillDesk::take(const std::shared_ptr<HttpExchange>& exchange, Metrics::Purpose purpose,
                     const CameraHub::CaptureRequest& capture, const std::string& ticket,
                     std::function<void(HttpExchange&, const Taken&)> answer) {
    TakeRequest request{capture, exchange->request().peer, ticket};
    const std::uint64_t number =
        _hub.take(std::move(request), [this, exchange, purpose, answer = std::move(answer)](TakeResult result) {
            const std::variant<Taken, Problem> outcome = finish(std::move(result), purpose);
            if (const auto* problem = std::get_if<Problem>(&outcome))
                exchange->send(problemResponse(*problem));
            else
                answer(*exchange, std::get<Taken>(outcome));
        });
    exchange->whenGone([this, number] { _hub.giveUp(number); });
}

std::variant<StillDesk::Taken, Problem> StillDesk::finish(TakeResult result, Metrics::Purpose purpose) {
    if (const auto* failure = std::get_if<TakeFailure>(&result)) {
        _metrics.countFailure(failure->kind);
        return problemOf(*failure);
    }
    auto& taken = std::get<TakenStill>(result);
    _metrics.countStill(purpose, taken);
    const int place = taken.placeAtFirst;
    try {
        auto still = keptStill(std::move(taken));
        _stills.add(still);
        _feed.tellStill(jsonText(stillAsJson(*still)));
        return Taken{std::move(still), place};
    } catch (const BrokenPicture& error) {
        return Problems::cameraFailed(error.what());
    } catch (const std::exception&) { // memory is lacking
        return Problems::unexpected();
    }
}

} // namespace CameraHubWeb
