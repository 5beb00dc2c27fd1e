#include "Services/CameraHubWeb/Api/Metrics.h"

#include <sstream>
#include <string_view>

namespace CameraHubWeb {
namespace {

constexpr std::array<std::string_view, 3> purposeNames{"api", "url", "stream"};
constexpr std::array<std::string_view, 4> stepNames{"queue", "capture", "fetch", "encode"};

struct FailureName {
    TakeFailureKind kind;
    std::string_view name;
};

constexpr std::array<FailureName, 6> failureNames{{{TakeFailureKind::QueueFull, "queue-full"},
                                                   {TakeFailureKind::NoSuchCamera, "no-such-camera"},
                                                   {TakeFailureKind::CameraFailed, "camera-failed"},
                                                   {TakeFailureKind::HubAway, "hub-away"},
                                                   {TakeFailureKind::HubTimeout, "hub-timeout"},
                                                   {TakeFailureKind::HubUnusable, "hub-unusable"}}};

void head(std::ostream& out, std::string_view name, std::string_view type, std::string_view help) {
    out << "# HELP " << name << ' ' << help << "\n# TYPE " << name << ' ' << type << '\n';
}

template <typename Number> void gauge(std::ostream& out, std::string_view name, std::string_view help, Number value) {
    head(out, name, "gauge", help);
    out << name << ' ' << value << '\n';
}

} // namespace

void Metrics::countStill(Purpose purpose, const TakenStill& still) {
    const std::lock_guard lock(_mutex);
    ++_stills.at(static_cast<std::size_t>(purpose));
    addTime(Step::Queue, still.queueTime);
    addTime(Step::Capture, still.captureTime);
    addTime(Step::Fetch, still.fetchTime);
}

void Metrics::countFailure(TakeFailureKind kind) {
    const std::lock_guard lock(_mutex);
    ++_failures[kind];
}

void Metrics::countTime(Step step, std::chrono::microseconds time) {
    const std::lock_guard lock(_mutex);
    addTime(step, time);
}

void Metrics::countFrame() {
    const std::lock_guard lock(_mutex);
    ++_frames;
}

void Metrics::addTime(Step step, std::chrono::microseconds time) {
    Histogram& histogram = _times.at(static_cast<std::size_t>(step));
    const double seconds = std::chrono::duration<double>(time).count();
    for (std::size_t i = 0; i < limits.size(); ++i)
        if (seconds <= limits.at(i))
            ++histogram.counts.at(i);
    ++histogram.count;
    histogram.seconds += seconds;
}

std::string Metrics::histograms() const {
    std::ostringstream out;
    constexpr std::string_view name = "camera_hub_web_still_seconds";
    head(out, name, "histogram", "What the time of a still goes into.");
    for (std::size_t step = 0; step < stepNames.size(); ++step) {
        const Histogram& histogram = _times.at(step);
        const std::string label = "{step=\"" + std::string(stepNames.at(step)) + "\"";
        for (std::size_t i = 0; i < limits.size(); ++i)
            out << name << "_bucket" << label << ",le=\"" << limits.at(i) << "\"} " << histogram.counts.at(i) << '\n';
        out << name << "_bucket" << label << ",le=\"+Inf\"} " << histogram.count << '\n';
        out << name << "_sum" << label << "} " << histogram.seconds << '\n';
        out << name << "_count" << label << "} " << histogram.count << '\n';
    }
    return out.str();
}

std::string Metrics::report(const MetricsNow& now) const {
    std::ostringstream out;
    gauge(out, "camera_hub_web_hub_reachable", "Whether the hub answers.", now.hub.isReachable ? 1 : 0);
    gauge(out, "camera_hub_web_cameras", "The cameras that the hub has.",
          now.hub.isReachable ? now.hub.cameras.size() : 0);
    gauge(out, "camera_hub_web_queue_length", "Stills that are waited for, the one at work included.", now.queueLength);
    gauge(out, "camera_hub_web_kept_stills", "Stills that are kept in memory.", now.keptStills);
    gauge(out, "camera_hub_web_kept_bytes", "The size of the stills that are kept in memory.", now.keptBytes);
    gauge(out, "camera_hub_web_event_listeners", "Clients that listen to the events.", now.eventListeners);
    gauge(out, "camera_hub_web_stream_viewers", "Clients that look at a stream.", now.streamViewers);

    const std::lock_guard lock(_mutex);
    head(out, "camera_hub_web_stills_total", "counter", "Stills that were taken, by what for.");
    for (std::size_t purpose = 0; purpose < purposeNames.size(); ++purpose)
        out << "camera_hub_web_stills_total{for=\"" << purposeNames.at(purpose) << "\"} " << _stills.at(purpose)
            << '\n';
    head(out, "camera_hub_web_failures_total", "counter", "Stills that failed, by kind.");
    for (const FailureName& failure : failureNames) {
        const auto found = _failures.find(failure.kind);
        out << "camera_hub_web_failures_total{kind=\"" << failure.name << "\"} "
            << (found == _failures.end() ? 0 : found->second) << '\n';
    }
    head(out, "camera_hub_web_stream_frames_total", "counter", "Pictures that viewers of streams were sent.");
    out << "camera_hub_web_stream_frames_total " << _frames << '\n';
    out << histograms();
    return out.str();
}

} // namespace CameraHubWeb
