#include "Services/CameraHubWeb/Api/LiveSource.h"

#include "Services/CameraHubWeb/Stills/JpegPicture.h"
#include "Services/CameraHubWeb/Stills/StillStore.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <string>
#include <utility>
#include <variant>

namespace CameraHubWeb {
namespace {

using std::chrono::steady_clock;

/// How long a stream waits after a still that failed.
constexpr std::chrono::seconds pause(1);

/// With the boundary behind it: browsers show a picture when they have read that.
SharedBytes part(const TakenStill& still, const std::string& id, const std::vector<std::uint8_t>& jpeg) {
    std::string head = "Content-Type: image/jpeg\r\nContent-Length: " + std::to_string(jpeg.size()) +
                       "\r\nCamera-Hub-Still: " + id + "\r\n";
    if (const auto exposure = still.still.capture.exposure)
        head += "Camera-Hub-Exposure: " + std::to_string(exposure->count()) + "us\r\n";
    head += "\r\n";
    const std::string_view end = LiveSource::delimiter;
    auto bytes = std::make_shared<std::vector<std::uint8_t>>();
    bytes->reserve(head.size() + jpeg.size() + end.size());
    bytes->insert(bytes->end(), head.begin(), head.end());
    bytes->insert(bytes->end(), jpeg.begin(), jpeg.end());
    bytes->insert(bytes->end(), end.begin(), end.end());
    return bytes;
}

bool areEqual(const PictureOptions& one, const PictureOptions& other) {
    return one.width == other.width && one.quality == other.quality;
}

} // namespace

LiveSource::LiveSource(LiveTools tools, CameraHub::CaptureRequest capture)
    : _tools(tools), _capture(std::move(capture)) {}

std::shared_ptr<LiveSource::Viewer> LiveSource::add(const PictureOptions& options, steady_clock::duration period) {
    auto viewer = std::make_shared<Viewer>();
    viewer->options = options;
    viewer->period = period;
    const std::lock_guard lock(_mutex);
    _viewers.push_back(viewer);
    return viewer;
}

void LiveSource::next(const std::shared_ptr<Viewer>& viewer, std::function<void(SharedBytes)> ready) {
    {
        const std::lock_guard lock(_mutex);
        viewer->ready = std::move(ready);
    }
    look();
}

void LiveSource::remove(const std::shared_ptr<Viewer>& viewer) {
    const std::lock_guard lock(_mutex);
    viewer->ready = nullptr;
    std::erase(_viewers, viewer);
}

std::size_t LiveSource::viewers() const {
    const std::lock_guard lock(_mutex);
    return _viewers.size();
}

/// Begins a still if one is due, or sees to it that it will be looked again when one is.
void LiveSource::look() {
    const Time now = steady_clock::now();
    Time again{};
    {
        const std::lock_guard lock(_mutex);
        const std::optional<Time> due = earliestDue();
        if (!due || _isTaking)
            return;
        again = std::max(*due, _notBefore);
        if (again > now) {
            if (_looksAt <= again)
                return; // it is seen to already
            _looksAt = again;
        } else {
            _isTaking = true;
            _began = now;
        }
    }
    if (again <= now)
        return begin();
    _tools.schedule.at(again, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            {
                const std::lock_guard lock(self->_mutex);
                self->_looksAt = Time::max();
            }
            self->look();
        }
    });
}

std::optional<LiveSource::Time> LiveSource::earliestDue() const {
    std::optional<Time> earliest;
    for (const auto& viewer : _viewers)
        if (viewer->ready && (!earliest || viewer->due < *earliest))
            earliest = viewer->due;
    return earliest;
}

void LiveSource::begin() {
    TakeRequest request;
    request.capture = _capture;
    request.origin = "stream of " + _capture.camera;
    _tools.hub.take(std::move(request), [weak = weak_from_this()](TakeResult result) {
        if (const auto self = weak.lock())
            self->taken(std::move(result));
    });
}

void LiveSource::taken(TakeResult result) {
    auto* const taken = std::get_if<TakenStill>(&result);
    std::vector<Group> groups;
    {
        const std::lock_guard lock(_mutex);
        _isTaking = false;
        if (taken)
            groups = groupsDue(_began);
        else
            _notBefore = steady_clock::now() + pause;
    }
    if (taken) {
        _tools.metrics.countStill(Metrics::Purpose::Stream, *taken);
        encodeBeside(std::move(*taken), groups);
    } else {
        _tools.metrics.countFailure(std::get<TakeFailure>(result).kind);
    }
    look();
}

void LiveSource::encodeBeside(TakenStill taken, const std::vector<Group>& groups) {
    std::size_t posted = 0;
    try {
        const auto still = std::make_shared<const TakenStill>(std::move(taken));
        const std::string id = newStillId();
        for (; posted < groups.size(); ++posted)
            _tools.workers.post(
                [self = shared_from_this(), still, id, group = groups[posted]] { self->encode(*still, id, group); });
    } catch (const std::exception&) {
        for (; posted < groups.size(); ++posted)
            letWait(groups[posted]);
    }
}

/// No memory for their picture, or a broken one: they get the next one.
void LiveSource::letWait(const Group& group) {
    for (const Asking& asking : group.asking)
        next(asking.viewer, asking.ready);
}

/// Those who wait, with half of their period's grace: who is due a little later gets this one, and from then on is due
/// together with the others.
std::vector<LiveSource::Group> LiveSource::groupsDue(Time began) {
    std::vector<Group> groups;
    for (const auto& viewer : _viewers) {
        if (!viewer->ready || viewer->due > began + viewer->period / 2)
            continue;
        auto group = std::ranges::find_if(groups, [&](const Group& g) { return areEqual(g.options, viewer->options); });
        if (group == groups.end())
            group = groups.insert(groups.end(), Group{viewer->options, {}});
        group->asking.push_back({viewer, std::exchange(viewer->ready, nullptr)});
        viewer->due = began + viewer->period;
    }
    return groups;
}

void LiveSource::encode(const TakenStill& still, const std::string& id, const Group& group) {
    const auto began = steady_clock::now();
    SharedBytes bytes;
    try {
        bytes = part(still, id, encodeJpeg(still.still.png, group.options.width, group.options.quality));
    } catch (const std::exception&) {
        return letWait(group);
    }
    _tools.metrics.countTime(Metrics::Step::Encode,
                             std::chrono::duration_cast<std::chrono::microseconds>(steady_clock::now() - began));
    for (const Asking& asking : group.asking) {
        _tools.metrics.countFrame();
        asking.ready(bytes);
    }
}

} // namespace CameraHubWeb
