#pragma once

#include "Services/CameraHubWeb/Http/HttpExchange.h"

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace CameraHubWeb {

class EventSubscription;

/// What happens, told to everybody who listens, as server-sent events (the HTML standard, section 9.2). Any thread;
/// listeners are called while the feed is locked, so that all hear the same order: they must not call it back.
class EventFeed {
public:
    /// What is so until it changes: who begins to listen is told first of all, in this order, and who is slow gets the
    /// latest alone.
    enum class Subject : std::uint8_t { Hub, Cameras, Queue };

    /// The state of a subject, as JSON on one line.
    void set(Subject subject, std::string json);

    /// Something that happened: a still was taken. Who is slow misses the oldest.
    void tellStill(const std::string& json);

    /// A line that means nothing, by which both sides notice that the other one has gone.
    void tellAlive();

    /// A listener.
    std::shared_ptr<BodyStream> subscribe();

    std::size_t listeners() const;

private:
    std::vector<std::shared_ptr<EventSubscription>> subscriptions();

    mutable std::mutex _mutex;
    std::array<std::string, 3> _states; // of the subjects; empty: not known yet
    std::uint64_t _lastId = 0;
    std::vector<std::weak_ptr<EventSubscription>> _subscriptions;
};

} // namespace CameraHubWeb
