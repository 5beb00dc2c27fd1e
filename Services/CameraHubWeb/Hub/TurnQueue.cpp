#include "Services/CameraHubWeb/Hub/TurnQueue.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace CameraHubWeb {

void TurnQueue::add(TakeJob job, int others) {
    const std::string& name = job.request.origin;
    auto origin =
        std::find_if(_turns.begin(), _turns.end(), [&name](const Origin& candidate) { return candidate.name == name; });
    if (origin == _turns.end()) {
        const bool isBeforeLast = !_turns.empty() && _turns.back().name == _servedLast;
        origin = _turns.insert(isBeforeLast ? std::prev(_turns.end()) : _turns.end(), Origin{name, {}});
    }
    TakeJob& added = origin->jobs.emplace_back(std::move(job));
    const auto order = inOrder();
    added.placeAtFirst = others + static_cast<int>(std::find(order.begin(), order.end(), &added) - order.begin());
}

TakeJob TurnQueue::takeNext() {
    _servedLast = _turns.front().name;
    TakeJob job = std::move(_turns.front().jobs.front());
    _turns.front().jobs.pop_front();
    if (_turns.front().jobs.empty())
        _turns.pop_front();
    else
        _turns.splice(_turns.end(), _turns, _turns.begin());
    return job;
}

std::optional<TakeJob> TurnQueue::remove(std::uint64_t number) {
    for (auto origin = _turns.begin(); origin != _turns.end(); ++origin) {
        const auto found = std::find_if(origin->jobs.begin(), origin->jobs.end(),
                                        [number](const TakeJob& job) { return job.number == number; });
        if (found == origin->jobs.end())
            continue;
        TakeJob job = std::move(*found);
        origin->jobs.erase(found);
        if (origin->jobs.empty())
            _turns.erase(origin);
        return job;
    }
    return std::nullopt;
}

std::vector<const TakeJob*> TurnQueue::inOrder() const {
    std::vector<const TakeJob*> order;
    const std::size_t count = size();
    for (std::size_t round = 0; order.size() < count; ++round)
        for (const Origin& origin : _turns)
            if (round < origin.jobs.size())
                order.push_back(&origin.jobs[round]);
    return order;
}

std::size_t TurnQueue::size() const {
    std::size_t count = 0;
    for (const Origin& origin : _turns)
        count += origin.jobs.size();
    return count;
}

} // namespace CameraHubWeb
