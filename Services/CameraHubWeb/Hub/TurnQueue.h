#pragma once

#include "Services/CameraHubWeb/Hub/HubTypes.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

namespace CameraHubWeb {

/// A request and whom to answer.
struct TakeJob {
    std::uint64_t number = 0;
    TakeRequest request;
    std::function<void(TakeResult)> done;
    std::chrono::steady_clock::time_point since;
    /// How many were before it.
    int placeAtFirst = 0;
};

/// Requests that wait: those who ask take turns, and each has its own in the order in which it asked. One thread at a
/// time.
class TurnQueue {
public:
    /// Tells the job its place, behind so many others.
    void add(TakeJob job, int others);

    /// Takes out the next one. There has to be one.
    TakeJob takeNext();

    /// Takes that one out; none if it does not wait here.
    std::optional<TakeJob> remove(std::uint64_t number);

    /// As they will be served, if no more come. Valid until the next change.
    std::vector<const TakeJob*> inOrder() const;

    std::size_t size() const;

private:
    struct Origin {
        std::string name;
        std::deque<TakeJob> jobs;
    };

    std::list<Origin> _turns; // none without a job; the first is the next, the one served last behind all others
    std::string _servedLast;
};

} // namespace CameraHubWeb
