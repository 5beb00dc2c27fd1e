#pragma once

#include "Services/CameraHubWeb/Api/Metrics.h"
#include "Services/CameraHubWeb/Api/RequestReading.h"
#include "Services/CameraHubWeb/Api/Schedule.h"
#include "Services/CameraHubWeb/Api/Workers.h"
#include "Services/CameraHubWeb/Http/HttpMessage.h"
#include "Services/CameraHubWeb/Hub/HubAccess.h"

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CameraHubWeb {

/// What a stream works with.
struct LiveTools {
    HubAccess& hub;
    Schedule& schedule;
    Workers& workers;
    Metrics& metrics;
};

/// Takes the stills of one camera and exposure that its viewers ask for. Any thread.
class LiveSource : public std::enable_shared_from_this<LiveSource> {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// What stands before the first part, and behind each.
    static constexpr std::string_view delimiter = "\r\n--frame\r\n";

    /// Who looks at it. Its fields belong to the source.
    struct Viewer {
        PictureOptions options;
        std::chrono::steady_clock::duration period{};
        /// From when on it wants the next picture.
        Time due{};
        /// Set while it waits for the next picture.
        std::function<void(SharedBytes)> ready;
    };

    LiveSource(LiveTools tools, CameraHub::CaptureRequest capture);

    const CameraHub::CaptureRequest& capture() const { return _capture; }

    std::shared_ptr<Viewer> add(const PictureOptions& options, std::chrono::steady_clock::duration period);
    void next(const std::shared_ptr<Viewer>& viewer, std::function<void(SharedBytes)> ready);
    void remove(const std::shared_ptr<Viewer>& viewer);
    std::size_t viewers() const;

private:
    struct Asking {
        std::shared_ptr<Viewer> viewer;
        std::function<void(SharedBytes)> ready;
    };

    /// Those who get the same bytes.
    struct Group {
        PictureOptions options;
        std::vector<Asking> asking;
    };

    void look();
    std::optional<Time> earliestDue() const;
    void begin();
    void taken(TakeResult result);
    std::vector<Group> groupsDue(Time began);
    void encodeBeside(TakenStill taken, const std::vector<Group>& groups);
    void letWait(const Group& group);
    void encode(const TakenStill& still, const std::string& id, const Group& group);

    const LiveTools _tools;
    const CameraHub::CaptureRequest _capture;
    mutable std::mutex _mutex;
    std::vector<std::shared_ptr<Viewer>> _viewers;
    bool _isTaking = false;
    Time _began{};
    Time _notBefore{};           // after a failure
    Time _looksAt = Time::max(); // when it is seen to that look() is called
};

} // namespace CameraHubWeb
