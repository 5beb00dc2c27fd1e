#include "Services/CameraHubWeb/Api/EventFeed.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <utility>

namespace CameraHubWeb {
namespace {

constexpr std::size_t mostStills = 64;

std::string eventText(std::uint64_t id, const char* name, const std::string& json) {
    return "id: " + std::to_string(id) + "\nevent: " + name + "\ndata: " + json + "\n\n";
}

const char* nameOf(EventFeed::Subject subject) {
    switch (subject) {
    case EventFeed::Subject::Hub:
        return "hub";
    case EventFeed::Subject::Cameras:
        return "cameras";
    case EventFeed::Subject::Queue:
        break;
    }
    return "queue";
}

} // namespace

/// What one listener has not been told yet.
class EventSubscription : public BodyStream {
public:
    void next(std::function<void(SharedBytes)> ready) override {
        {
            const std::lock_guard lock(_mutex);
            _ready = std::move(ready);
        }
        deliver();
    }

    void ended() override {
        const std::lock_guard lock(_mutex);
        _isEnded = true;
        _ready = nullptr;
    }

    bool isEnded() const {
        const std::lock_guard lock(_mutex);
        return _isEnded;
    }

    void set(EventFeed::Subject subject, std::string text) {
        {
            const std::lock_guard lock(_mutex);
            _states.at(static_cast<std::size_t>(subject)) = std::move(text);
        }
        deliver();
    }

    void tellStill(std::string text) {
        {
            const std::lock_guard lock(_mutex);
            _stills.push_back(std::move(text));
            if (_stills.size() > mostStills)
                _stills.pop_front();
        }
        deliver();
    }

    void tellAlive() {
        {
            const std::lock_guard lock(_mutex);
            _isToBeTold = true;
        }
        deliver();
    }

private:
    /// Calls without the lock: the listener may ask for the next at once.
    void deliver() {
        std::function<void(SharedBytes)> ready;
        std::string text;
        {
            const std::lock_guard lock(_mutex);
            if (!_ready)
                return;
            text = takeText();
            if (text.empty())
                return;
            ready = std::exchange(_ready, nullptr);
        }
        ready(std::make_shared<const std::vector<std::uint8_t>>(text.begin(), text.end()));
    }

    std::string takeText() {
        std::string text;
        for (std::string& state : _states)
            text += std::exchange(state, "");
        for (const std::string& still : _stills)
            text += still;
        _stills.clear();
        if (std::exchange(_isToBeTold, false) && text.empty())
            text = ": alive\n\n";
        return text;
    }

    mutable std::mutex _mutex;
    std::array<std::string, 3> _states;
    std::deque<std::string> _stills;
    bool _isToBeTold = false;
    bool _isEnded = false;
    std::function<void(SharedBytes)> _ready;
};

std::vector<std::shared_ptr<EventSubscription>> EventFeed::subscriptions() {
    std::vector<std::shared_ptr<EventSubscription>> living;
    std::erase_if(_subscriptions, [&living](const std::weak_ptr<EventSubscription>& subscription) {
        auto alive = subscription.lock();
        if (!alive || alive->isEnded())
            return true;
        living.push_back(std::move(alive));
        return false;
    });
    return living;
}

void EventFeed::set(Subject subject, std::string json) {
    const std::lock_guard lock(_mutex);
    std::string& state = _states.at(static_cast<std::size_t>(subject));
    if (state == json)
        return;
    state = std::move(json);
    const std::string text = eventText(++_lastId, nameOf(subject), state);
    for (const auto& subscription : subscriptions())
        subscription->set(subject, text);
}

void EventFeed::tellStill(const std::string& json) {
    const std::lock_guard lock(_mutex);
    const std::string text = eventText(++_lastId, "still", json);
    for (const auto& subscription : subscriptions())
        subscription->tellStill(text);
}

void EventFeed::tellAlive() {
    const std::lock_guard lock(_mutex);
    for (const auto& subscription : subscriptions())
        subscription->tellAlive();
}

std::shared_ptr<BodyStream> EventFeed::subscribe() {
    const std::lock_guard lock(_mutex);
    auto subscription = std::make_shared<EventSubscription>();
    for (const Subject subject : {Subject::Hub, Subject::Cameras, Subject::Queue})
        if (const std::string& state = _states.at(static_cast<std::size_t>(subject)); !state.empty())
            subscription->set(subject, eventText(_lastId, nameOf(subject), state));
    _subscriptions.push_back(subscription);
    return subscription;
}

std::size_t EventFeed::listeners() const {
    const std::lock_guard lock(_mutex);
    return static_cast<std::size_t>(std::ranges::count_if(_subscriptions, [](const auto& subscription) {
        const auto alive = subscription.lock();
        return alive && !alive->isEnded();
    }));
}

} // namespace CameraHubWeb
