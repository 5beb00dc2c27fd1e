#include "Services/CameraHubWeb/Api/LiveStreams.h"

#include "Services/CameraHubWeb/Api/LiveSource.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <utility>

namespace CameraHubWeb {
namespace {

bool areEqual(const CameraHub::CaptureRequest& one, const CameraHub::CaptureRequest& other) {
    if (one.camera != other.camera || one.settle != other.settle || one.exposure.index() != other.exposure.index())
        return false;
    if (const auto* percent = std::get_if<CameraHub::Percent>(&one.exposure))
        return percent->value == std::get<CameraHub::Percent>(other.exposure).value;
    return std::get<std::chrono::microseconds>(one.exposure) == std::get<std::chrono::microseconds>(other.exposure);
}

/// One who looks.
class LiveStream : public BodyStream {
public:
    LiveStream(std::shared_ptr<LiveSource> source, std::shared_ptr<LiveSource::Viewer> viewer)
        : _source(std::move(source)), _viewer(std::move(viewer)) {}

    void next(std::function<void(SharedBytes)> ready) override {
        if (!_hasBegun.exchange(true)) {
            const std::string_view text = LiveSource::delimiter;
            return ready(std::make_shared<const std::vector<std::uint8_t>>(text.begin(), text.end()));
        }
        _source->next(_viewer, std::move(ready));
    }

    void ended() override { _source->remove(_viewer); }

private:
    const std::shared_ptr<LiveSource> _source;
    const std::shared_ptr<LiveSource::Viewer> _viewer;
    std::atomic<bool> _hasBegun = false;
};

} // namespace

LiveStreams::LiveStreams(HubAccess& hub, Schedule& schedule, Workers& workers, Metrics& metrics)
    : _hub(hub), _schedule(schedule), _workers(workers), _metrics(metrics) {}

std::shared_ptr<BodyStream> LiveStreams::watch(const CameraHub::CaptureRequest& capture, const PictureOptions& options,
                                               double framesPerSecond) {
    using std::chrono::steady_clock;
    const auto period =
        std::chrono::duration_cast<steady_clock::duration>(std::chrono::duration<double>(1 / framesPerSecond));
    std::shared_ptr<LiveSource> source = sourceOf(capture);
    auto viewer = source->add(options, period);
    return std::make_shared<LiveStream>(std::move(source), std::move(viewer));
}

std::size_t LiveStreams::viewers() const {
    const std::lock_guard lock(_mutex);
    std::size_t count = 0;
    for (const auto& weak : _sources)
        if (const auto source = weak.lock())
            count += source->viewers();
    return count;
}

std::shared_ptr<LiveSource> LiveStreams::sourceOf(const CameraHub::CaptureRequest& capture) {
    const std::lock_guard lock(_mutex);
    std::erase_if(_sources, [](const auto& weak) { return weak.expired(); });
    for (const auto& weak : _sources)
        if (auto source = weak.lock(); source && areEqual(source->capture(), capture))
            return source;
    auto source = std::make_shared<LiveSource>(LiveTools{_hub, _schedule, _workers, _metrics}, capture);
    _sources.push_back(source);
    return source;
}

} // namespace CameraHubWeb
