#pragma once

#include "Services/CameraHubWeb/Hub/HubTypes.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

namespace CameraHubWeb {

/// Looks at the hub and its cameras time and again, on a thread and a connection of its own, and waits for them. Any
/// thread may ask it.
class HubLook {
public:
    struct Listener {
        /// The state is another one; called without a lock.
        std::function<void()> changed;
        /// When a still was being taken the last time: the hub then answers nobody else.
        std::function<std::chrono::steady_clock::time_point()> lastWork;
    };

    HubLook(const HubSettings& settings, const CameraHub::Cancellation& cancellation, Listener listener);
    ~HubLook() { stop(); }
    HubLook(const HubLook&) = delete;
    HubLook& operator=(const HubLook&) = delete;

    /// Once.
    void start();

    /// Ends all waiting, and the thread, whose calls the cancellation is to end before.
    void stop();

    HubState state() const;

    /// Changes when the hub has gone: older connections are dead.
    std::uint64_t generation() const;

    /// The failure where there is no such camera, and none to wait for.
    std::optional<TakeFailure> unknown(const std::string& uid) const;

    using Finding = std::variant<CameraHub::Camera, TakeFailure>;

    /// The camera, as soon as it is there. A first look is waited for, and a hub or camera that has just gone.
    Finding waitFor(const std::string& uid);

    /// Somebody else has found that the hub is not there: it is looked at now.
    void noteGone(const std::string& detail);

private:
    using Time = std::chrono::steady_clock::time_point;
    struct Judgement {
        std::optional<Finding> finding;
        /// Until when to wait where there is none.
        Time until;
    };

    void run();
    bool look(std::optional<CameraHub::CameraHubClient>& client);
    void lookAnew(std::optional<CameraHub::CameraHubClient>& client);
    void update(std::optional<std::string> version, std::vector<CameraHub::Camera> cameras);
    void setGone(TakeFailureKind kind, const std::string& detail);
    void beginAbsence();
    Judgement judge(const std::string& uid, Time begun, Time now) const;
    bool wasThereBefore(const std::string& uid) const;

    const HubSettings _settings;
    const CameraHub::Options _options;
    const Listener _listener;

    mutable std::mutex _mutex;
    std::condition_variable _changed;
    HubState _state;
    TakeFailureKind _whyGone = TakeFailureKind::HubAway;
    Time _goneAt = Time::min(); // the last time; never before it has been there
    std::vector<std::string> _uidsBefore;
    std::uint64_t _generation = 0;
    bool _hasLooked = false;
    bool _isToLook = false;
    bool _isToStop = false;
    std::thread _thread;
};

} // namespace CameraHubWeb
