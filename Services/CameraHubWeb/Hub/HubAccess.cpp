#include "Services/CameraHubWeb/Hub/HubAccess.h"

#include "Services/CameraHubWeb/Hub/HubLook.h"
#include "Services/CameraHubWeb/Hub/StillTaking.h"
#include "Services/CameraHubWeb/Hub/Teller.h"
#include "Services/CameraHubWeb/Hub/WorkQueue.h"

#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>

namespace CameraHubWeb {
namespace {

HubAccess::Settings checked(HubAccess::Settings settings) {
    if (settings.callTime < std::chrono::milliseconds(1) || settings.callTime > std::chrono::hours(24))
        throw std::invalid_argument("the time for a request is at least 1 ms and at most 24 hours");
    return settings;
}

/// A call of the observer with what there is to tell; none where nobody listens.
template <typename Listener, typename Get> std::function<void()> telling(Listener listener, Get get) {
    if (!listener)
        return {};
    return [listener = std::move(listener), get = std::move(get)] { listener(get()); };
}

} // namespace

class HubAccess::Implementation {
public:
    Implementation(Settings settings, Observer observer)
        : _settings(checked(std::move(settings))),
          _hubTeller(telling(std::move(observer.hub), [this] { return _look.state(); })),
          _queueTeller(telling(std::move(observer.queue), [this] { return _queue.entries(); })) {}

    ~Implementation() {
        _queue.end();
        _cancellation.cancel();
        _look.stop();
        if (_worker.joinable())
            _worker.join();
        _hubTeller.stop();
        _queueTeller.stop();
    }

    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;

    void start() {
        _hubTeller.start();
        _queueTeller.start();
        _look.start();
        _worker = std::thread([this] { work(); });
    }

    HubState state() const { return _look.state(); }
    std::vector<QueueEntry> queue() const { return _queue.entries(); }

    std::uint64_t take(TakeRequest request, std::function<void(TakeResult)> done) {
        if (auto unknown = _look.unknown(request.capture.camera)) {
            done(std::move(*unknown));
            return 0;
        }
        return _queue.add(std::move(request), std::move(done));
    }

    void giveUp(std::uint64_t number) { _queue.giveUp(number); }

private:
    /// What it throws, as memory is lacking, is its own loss: the next one is served all the same.
    static void answer(const TakeJob& job, TakeResult result) {
        try {
            job.done(std::move(result));
        } catch (const std::exception&) {
        }
    }

    void work() {
        while (!_queue.hasEnded()) {
            if (auto job = _queue.next(_taking.connections().nextIdle())) {
                TakeResult result = _taking.take(*job);
                _queue.finish();
                answer(*job, std::move(result));
            }
            _taking.connections().dropIdle();
        }
        for (TakeJob& job : _queue.takeRest())
            answer(job, TakeFailure{TakeFailureKind::Ended, "the program ends"});
    }

    const Settings _settings;
    const CameraHub::Cancellation _cancellation;
    Teller _hubTeller;
    Teller _queueTeller;
    WorkQueue _queue{_settings.queueLength, [this] { _queueTeller.wake(); }};
    HubLook _look{_settings, _cancellation, {[this] { _hubTeller.wake(); }, [this] { return _queue.lastWork(); }}};
    StillTaking _taking{_settings, _cancellation, _look, [this](TakeStep step) { _queue.setStep(step); }};
    std::thread _worker;
};

HubAccess::HubAccess(Settings settings, Observer observer)
    : _implementation(std::make_unique<Implementation>(std::move(settings), std::move(observer))) {
    _implementation->start();
}

HubAccess::~HubAccess() = default;

HubState HubAccess::state() const { return _implementation->state(); }
std::vector<QueueEntry> HubAccess::queue() const { return _implementation->queue(); }

std::uint64_t HubAccess::take(TakeRequest request, std::function<void(TakeResult)> done) {
    return _implementation->take(std::move(request), std::move(done));
}

void HubAccess::giveUp(std::uint64_t number) { _implementation->giveUp(number); }

} // namespace CameraHubWeb
