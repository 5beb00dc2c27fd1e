#pragma once

#include <CameraHubClient/CameraHubClient.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace CameraHubWeb {

/// Where the hub is, and how long what may take.
struct HubSettings {
    CameraHub::Address address;
    /// After which the connection for a camera is dropped, and the hub may close it.
    std::chrono::milliseconds idleTime = std::chrono::minutes(1);
    /// For one request to be answered, the settle time besides.
    std::chrono::milliseconds callTime = std::chrono::minutes(1);
    /// Between two looks at the hub.
    std::chrono::milliseconds lookEvery = std::chrono::seconds(1);
    /// For a hub that has just gone to come back, with the camera that it had: a service that restarts is away for
    /// seconds. A request whose turn it is waits for it so long.
    std::chrono::milliseconds returnTime = std::chrono::seconds(5);
    /// How many requests may wait.
    std::size_t queueLength = 64;
};

/// What is known of the hub.
struct HubState {
    bool isReachable = false;
    /// Empty before it was reached for the first time.
    std::string version;
    /// Why it is not reachable, one line for people.
    std::string detail;
    /// As they were when it was reached last.
    std::vector<CameraHub::Camera> cameras;
};

/// A still to take.
struct TakeRequest {
    CameraHub::CaptureRequest capture;
    /// Who asks: those who ask take turns, however many requests each has.
    std::string origin;
    /// The client's name for it; may be empty.
    std::string ticket;
};

/// A still that was taken.
struct TakenStill {
    CameraHub::Still still;
    CameraHub::Camera camera;
    TakeRequest request;
    std::chrono::system_clock::time_point takenAt;
    /// How many were before it when it was asked for, the one at work included.
    int placeAtFirst = 0;
    std::chrono::microseconds queueTime{0};
    std::chrono::microseconds captureTime{0};
    std::chrono::microseconds fetchTime{0};
};

enum class TakeFailureKind : std::uint8_t {
    QueueFull,
    NoSuchCamera,
    CameraFailed, ///< The hub's text is the detail.
    HubAway,      ///< Not there, or ended without a reply.
    HubTimeout,
    HubUnusable, ///< Something else listens there.
    Ended,       ///< This object ends.
};

/// Why there is no still.
struct TakeFailure {
    TakeFailureKind kind = TakeFailureKind::HubAway;
    /// One sentence for people.
    std::string detail;
};

using TakeResult = std::variant<TakenStill, TakeFailure>;

enum class TakeStep : std::uint8_t {
    Waiting,
    Opening, ///< The first still on a connection: the camera is opened, and its automatic controls settle.
    Taking,
    Fetching,
};

/// A request that has not been answered.
struct QueueEntry {
    std::string ticket;
    std::string uid;
    /// 0: at work; 1: the next.
    int place = 0;
    TakeStep step = TakeStep::Waiting;
    /// Since it was asked for.
    std::chrono::steady_clock::time_point since;
};

} // namespace CameraHubWeb
