#pragma once

#include <CameraHubClient/CameraHubClient.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace CameraHubWeb {

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

/// The way to one hub: a connection for each camera that is in use, requests one at a time and in turns, and a look at
/// the hub and its cameras once a second. Any thread may call it; its own threads call back, never while it holds a
/// lock, and one at a time for each of the kinds below.
class HubAccess {
public:
    struct Settings {
        CameraHub::Address address;
        /// After which the connection for a camera is dropped, and the hub may close it.
        std::chrono::milliseconds idleTime = std::chrono::minutes(1);
        /// For one request to be answered, the settle time besides.
        std::chrono::milliseconds callTime = std::chrono::minutes(1);
        /// Between two looks at the hub.
        std::chrono::milliseconds lookEvery = std::chrono::seconds(1);
        /// How many requests may wait.
        std::size_t queueLength = 64;
    };

    struct Observer {
        /// The hub went or came, or its cameras changed. Once at the start.
        std::function<void(const HubState&)> hub;
        /// The queue, the one at work first.
        std::function<void(const std::vector<QueueEntry>&)> queue;
    };

    HubAccess(Settings settings, Observer observer);

    /// Answers everything that waits with Ended. Waits for the threads, not for the hub.
    ~HubAccess();

    HubAccess(const HubAccess&) = delete;
    HubAccess& operator=(const HubAccess&) = delete;

    HubState state() const;
    std::vector<QueueEntry> queue() const;

    /// Has `done` called once, on a thread of this object's or before it returns. The exposure and the settle time are
    /// within what CaptureRequest tells. The still begins after this call. Returns what giveUp takes.
    std::uint64_t take(TakeRequest request, std::function<void(TakeResult)> done);

    /// Takes a request that has not begun out of the queue: nobody waits for it any more, and its `done` is not called.
    /// One that has begun goes on to its end.
    void giveUp(std::uint64_t number);

private:
    class Implementation;
    std::unique_ptr<Implementation> _implementation;
};

} // namespace CameraHubWeb
