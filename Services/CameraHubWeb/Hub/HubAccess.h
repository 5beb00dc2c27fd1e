#pragma once

#include "Services/CameraHubWeb/Hub/HubTypes.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace CameraHubWeb {

/// The way to one hub: a connection for each camera that is in use, requests one at a time and in turns, and a look at
/// the hub and its cameras once a second. Any thread may call it; its own threads call back, never while it holds a
/// lock, and one at a time for each of the kinds below.
class HubAccess {
public:
    using Settings = HubSettings;

    /// Either may be empty. Changes that come while one is called are told as one, as it is then. They must not throw,
    /// and may call everything but the destructor.
    struct Observer {
        /// The hub went or came, or its cameras changed. The first time after the first look, which may be before the
        /// constructor returns.
        std::function<void(const HubState&)> hub;
        /// The queue, the one at work first.
        std::function<void(const std::vector<QueueEntry>&)> queue;
    };

    /// Throws std::invalid_argument for times outside of what CameraHub::Options tells, std::system_error where the
    /// system has no threads or file descriptors left.
    HubAccess(Settings settings, Observer observer);

    /// Answers everything that waits with Ended. Waits for the threads, not for the hub; only the system's looking up
    /// of its name is not cut short.
    ~HubAccess();

    HubAccess(const HubAccess&) = delete;
    HubAccess& operator=(const HubAccess&) = delete;

    HubState state() const;
    std::vector<QueueEntry> queue() const;

    /// Has `done` called once, on a thread of this object's or before it returns: it must not throw, nor block, since
    /// the next request waits for it. The exposure and the settle time are within what CaptureRequest tells. The still
    /// begins after this call. Returns what giveUp takes.
    std::uint64_t take(TakeRequest request, std::function<void(TakeResult)> done);

    /// Takes a request that has not begun out of the queue: nobody waits for it any more, and its `done` is not called.
    /// One that has begun goes on to its end.
    void giveUp(std::uint64_t number);

private:
    class Implementation;
    std::unique_ptr<Implementation> _implementation;
};

} // namespace CameraHubWeb
