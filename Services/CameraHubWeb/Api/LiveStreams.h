#pragma once

#include "Services/CameraHubWeb/Api/Metrics.h"
#include "Services/CameraHubWeb/Api/RequestReading.h"
#include "Services/CameraHubWeb/Api/Schedule.h"
#include "Services/CameraHubWeb/Api/Workers.h"
#include "Services/CameraHubWeb/Http/HttpExchange.h"
#include "Services/CameraHubWeb/Hub/HubAccess.h"

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace CameraHubWeb {

class LiveSource;

/// Streams of repeated stills. All who look at one camera with one exposure share each still, whatever their sizes and
/// rates; when nobody asks for the next picture, none is taken. Any thread.
class LiveStreams {
public:
    /// All outlive this object, and what they still call when it has gone does nothing.
    LiveStreams(HubAccess& hub, Schedule& schedule, Workers& workers, Metrics& metrics);

    /// The body of an answer of the type below: JPEG files, at most so many a
    /// second. While the camera or the hub is away there is none.
    std::shared_ptr<BodyStream> watch(const CameraHub::CaptureRequest& capture, const PictureOptions& options,
                                      double framesPerSecond);

    static constexpr auto contentType = "multipart/x-mixed-replace; boundary=frame";

    std::size_t viewers() const;

private:
    std::shared_ptr<LiveSource> sourceOf(const CameraHub::CaptureRequest& capture);

    HubAccess& _hub;
    Schedule& _schedule;
    Workers& _workers;
    Metrics& _metrics;
    mutable std::mutex _mutex;
    std::vector<std::weak_ptr<LiveSource>> _sources;
};

} // namespace CameraHubWeb
