#include "Services/CameraHubWeb/Hub/WorkQueue.h"

#include <utility>

namespace CameraHubWeb {
namespace {

QueueEntry entryOf(const TakeJob& job, int place) {
    return {job.request.ticket, job.request.capture.camera, place, TakeStep::Waiting, job.since};
}

} // namespace

std::uint64_t WorkQueue::add(TakeRequest request, std::function<void(TakeResult)> done) {
    TakeJob job{0, std::move(request), std::move(done), std::chrono::steady_clock::now(), 0};
    const auto refusal = put(job);
    const std::uint64_t number = job.number;
    if (refusal == TakeFailureKind::QueueFull)
        job.done(TakeFailure{*refusal, "as many requests as are allowed wait already"});
    else if (refusal)
        job.done(TakeFailure{*refusal, "the program ends"});
    else
        _changed();
    return number;
}

/// What is refused stays with the caller.
std::optional<TakeFailureKind> WorkQueue::put(TakeJob& job) {
    const std::lock_guard lock(_mutex);
    job.number = ++_lastNumber;
    if (_hasEnded)
        return TakeFailureKind::Ended;
    if (_waiting.size() >= _length)
        return TakeFailureKind::QueueFull;
    _waiting.add(std::move(job), _atWork ? 1 : 0);
    _hasMore.notify_all();
    return std::nullopt;
}

void WorkQueue::giveUp(std::uint64_t number) {
    std::optional<TakeJob> removed; // what it holds may be of any kind: it goes without the lock
    {
        const std::lock_guard lock(_mutex);
        removed = _waiting.remove(number);
    }
    if (removed)
        _changed();
}

std::vector<QueueEntry> WorkQueue::entries() const {
    const std::lock_guard lock(_mutex);
    std::vector<QueueEntry> entries;
    if (_atWork)
        entries.push_back(*_atWork);
    int place = 0;
    for (const TakeJob* job : _waiting.inOrder())
        entries.push_back(entryOf(*job, ++place));
    return entries;
}

std::optional<TakeJob> WorkQueue::next(std::chrono::steady_clock::time_point until) {
    std::optional<TakeJob> job;
    {
        std::unique_lock lock(_mutex);
        _hasMore.wait_until(lock, until, [this] { return _hasEnded || _waiting.size() > 0; });
        if (_hasEnded || _waiting.size() == 0)
            return std::nullopt;
        job = _waiting.takeNext();
        _atWork = entryOf(*job, 0);
    }
    _changed();
    return job;
}

void WorkQueue::setStep(TakeStep step) {
    {
        const std::lock_guard lock(_mutex);
        _atWork->step = step;
    }
    _changed();
}

void WorkQueue::finish() {
    {
        const std::lock_guard lock(_mutex);
        _atWork.reset();
        _lastWork = std::chrono::steady_clock::now();
    }
    _changed();
}

std::chrono::steady_clock::time_point WorkQueue::lastWork() const {
    const std::lock_guard lock(_mutex);
    return _atWork ? std::chrono::steady_clock::now() : _lastWork;
}

void WorkQueue::end() {
    const std::lock_guard lock(_mutex);
    _hasEnded = true;
    _hasMore.notify_all();
}

bool WorkQueue::hasEnded() const {
    const std::lock_guard lock(_mutex);
    return _hasEnded;
}

std::vector<TakeJob> WorkQueue::takeRest() {
    const std::lock_guard lock(_mutex);
    std::vector<TakeJob> rest;
    while (_waiting.size() > 0)
        rest.push_back(_waiting.takeNext());
    return rest;
}

} // namespace CameraHubWeb
