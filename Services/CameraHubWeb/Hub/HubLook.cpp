#include "Services/CameraHubWeb/Hub/HubLook.h"

#include "Services/CameraHubWeb/Hub/Connecting.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace CameraHubWeb {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

bool areSame(const CameraHub::Camera& one, const CameraHub::Camera& other) {
    const auto all = [](const CameraHub::Camera& camera) {
        return std::tie(camera.uid, camera.make, camera.model, camera.resolution.width, camera.resolution.height,
                        camera.shortestExposure, camera.longestExposure);
    };
    return all(one) == all(other);
}

} // namespace

HubLook::HubLook(const HubSettings& settings, const CameraHub::Cancellation& cancellation, Listener listener)
    : _settings(settings), _options(optionsOf(settings, cancellation)), _listener(std::move(listener)) {
    _state.detail = "the hub has not answered yet";
}

void HubLook::start() {
    _thread = std::thread([this] { run(); });
}

void HubLook::stop() {
    {
        const std::lock_guard lock(_mutex);
        _isToStop = true;
        _changed.notify_all();
    }
    if (_thread.joinable())
        _thread.join();
}

HubState HubLook::state() const {
    const std::lock_guard lock(_mutex);
    return _state;
}

std::uint64_t HubLook::generation() const {
    const std::lock_guard lock(_mutex);
    return _generation;
}

std::optional<TakeFailure> HubLook::unknown(const std::string& uid) const {
    const std::lock_guard lock(_mutex);
    const auto now = Clock::now();
    const Judgement judgement = judge(uid, now, now);
    const auto* const failure = judgement.finding ? std::get_if<TakeFailure>(&*judgement.finding) : nullptr;
    return failure != nullptr && failure->kind == TakeFailureKind::NoSuchCamera ? std::optional(*failure)
                                                                                : std::nullopt;
}

HubLook::Finding HubLook::waitFor(const std::string& uid) {
    std::unique_lock lock(_mutex);
    const Time begun = Clock::now();
    while (true) {
        Judgement judgement = judge(uid, begun, Clock::now());
        if (judgement.finding)
            return std::move(*judgement.finding);
        _changed.wait_until(lock, judgement.until);
    }
}

HubLook::Judgement HubLook::judge(const std::string& uid, Time begun, Time now) const {
    if (_isToStop)
        return {TakeFailure{TakeFailureKind::Ended, "the program ends"}, now};
    const Time firstLookEnd = begun + _settings.callTime;
    if (!_hasLooked && now < firstLookEnd)
        return {std::nullopt, firstLookEnd};
    if (!_hasLooked)
        return {TakeFailure{TakeFailureKind::HubTimeout, _state.detail}, now};
    const auto camera = std::find_if(_state.cameras.begin(), _state.cameras.end(),
                                     [&uid](const CameraHub::Camera& candidate) { return candidate.uid == uid; });
    if (_state.isReachable && camera != _state.cameras.end())
        return {*camera, now};
    const Time returnEnd = std::min(_goneAt, begun) + _settings.returnTime;
    const bool mayReturn = _state.isReachable ? wasThereBefore(uid) : _whyGone == TakeFailureKind::HubAway;
    if (mayReturn && now < returnEnd)
        return {std::nullopt, returnEnd};
    if (_state.isReachable)
        return {TakeFailure{TakeFailureKind::NoSuchCamera, "the hub has no camera with the uid \"" + uid + "\""}, now};
    return {TakeFailure{_whyGone, _state.detail}, now};
}

bool HubLook::wasThereBefore(const std::string& uid) const {
    return std::find(_uidsBefore.begin(), _uidsBefore.end(), uid) != _uidsBefore.end();
}

void HubLook::noteGone(const std::string& detail) {
    setGone(TakeFailureKind::HubAway, detail);
    const std::lock_guard lock(_mutex);
    _isToLook = true;
    _changed.notify_all();
}

void HubLook::run() {
    std::optional<CameraHub::CameraHubClient> client;
    std::unique_lock lock(_mutex);
    while (!_isToStop) {
        _isToLook = false;
        lock.unlock();
        const bool isThere = look(client);
        lock.lock();
        const auto pause =
            isThere ? _settings.lookEvery : std::min<std::chrono::milliseconds>(_settings.lookEvery, 500ms);
        _changed.wait_for(lock, pause, [this] { return _isToLook || _isToStop; });
    }
}

/// Whether the hub is there.
bool HubLook::look(std::optional<CameraHub::CameraHubClient>& client) {
    const Time begun = Clock::now();
    try {
        lookAnew(client);
        return true;
    } catch (const CameraHub::Cancelled&) {
        client.reset();
    } catch (const CameraHub::TimedOut& error) {
        client.reset();
        if (_listener.lastWork() < begun) // else it has waited for the still
            setGone(TakeFailureKind::HubTimeout, error.what());
    } catch (const CameraHub::Refusal& error) {
        client.reset();
        setGone(TakeFailureKind::HubUnusable, error.what());
    } catch (...) {
        client.reset();
        const TakeFailure failure = currentFailure();
        setGone(failure.kind, failure.detail);
    }
    return false;
}

/// With the connection that there is, or with a new one.
void HubLook::lookAnew(std::optional<CameraHub::CameraHubClient>& client) {
    try {
        if (client) {
            update(std::nullopt, client->discover());
            return;
        }
    } catch (const CameraHub::ConnectionEnded&) {
        // It may be back already, as another one.
        client.reset();
        const std::lock_guard lock(_mutex);
        beginAbsence();
    }
    client = connectTo(_settings.address, _options);
    std::string version = client->version();
    update(std::move(version), client->discover());
}

/// Without a version it is the same as before.
void HubLook::update(std::optional<std::string> version, std::vector<CameraHub::Camera> cameras) {
    bool isNews = false;
    {
        const std::lock_guard lock(_mutex);
        isNews = !_hasLooked || !_state.isReachable || (version && *version != _state.version) ||
                 !std::equal(cameras.begin(), cameras.end(), _state.cameras.begin(), _state.cameras.end(), areSame);
        _hasLooked = true;
        if (isNews)
            _state = {true, version ? std::move(*version) : _state.version, "", std::move(cameras)};
        _changed.notify_all();
    }
    if (isNews)
        _listener.changed();
}

void HubLook::setGone(TakeFailureKind kind, const std::string& detail) {
    bool isNews = false;
    {
        const std::lock_guard lock(_mutex);
        if (_state.isReachable)
            beginAbsence();
        isNews = !_hasLooked || _state.isReachable || _state.detail != detail;
        _hasLooked = true;
        _whyGone = kind;
        _state.isReachable = false;
        _state.detail = detail;
        _changed.notify_all();
    }
    if (isNews)
        _listener.changed();
}

/// With the lock.
void HubLook::beginAbsence() {
    const Time now = Clock::now();
    // Gone again before all cameras were back: those of the first time are still to come.
    if (now >= _goneAt + _settings.returnTime) {
        _uidsBefore.clear();
        for (const CameraHub::Camera& camera : _state.cameras)
            _uidsBefore.push_back(camera.uid);
    }
    _goneAt = now;
    ++_generation;
}

} // namespace CameraHubWeb
