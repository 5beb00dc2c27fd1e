#pragma once

#include "Services/CameraHubWeb/Hub/HubAccess.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace CameraHubWeb {

/// What the moment is like, for a report.
struct MetricsNow {
    HubState hub;
    std::size_t queueLength = 0;
    std::size_t keptStills = 0;
    std::size_t keptBytes = 0;
    std::size_t eventListeners = 0;
    std::size_t streamViewers = 0;
};

/// Counts what happens, for Prometheus. Any thread.
class Metrics {
public:
    /// Who wanted a still.
    enum class Purpose : std::uint8_t { Api, Url, Stream };

    /// What a still's time goes into.
    enum class Step : std::uint8_t { Queue, Capture, Fetch, Encode };

    void countStill(Purpose purpose, const TakenStill& still);
    void countFailure(TakeFailureKind kind);
    void countTime(Step step, std::chrono::microseconds time);
    /// A picture that was sent to one viewer of a stream.
    void countFrame();

    /// Prometheus' text format, version 0.0.4.
    std::string report(const MetricsNow& now) const;

private:
    static constexpr std::array<double, 12> limits{0.001, 0.0025, 0.005, 0.01, 0.025, 0.05,
                                                   0.1,   0.25,   0.5,   1,    2.5,   10}; // seconds

    struct Histogram {
        std::array<std::uint64_t, limits.size()> counts{}; // at most so long
        std::uint64_t count = 0;
        double seconds = 0;
    };

    void addTime(Step step, std::chrono::microseconds time);
    std::string histograms() const;

    mutable std::mutex _mutex;
    std::array<std::uint64_t, 3> _stills{}; // by purpose
    std::array<Histogram, 4> _times;        // by step
    std::map<TakeFailureKind, std::uint64_t> _failures;
    std::uint64_t _frames = 0;
};

} // namespace CameraHubWeb
