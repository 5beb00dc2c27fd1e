#include "Services/CameraHubWeb/Api/Metrics.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace CameraHubWeb {
namespace {

using std::chrono::microseconds;
using testing::HasSubstr;

TEST(MetricsTest, StillsAreCountedByWhatTheyAreFor) {
    Metrics metrics;
    metrics.countStill(Metrics::Purpose::Api, {});
    metrics.countStill(Metrics::Purpose::Stream, {});
    metrics.countStill(Metrics::Purpose::Stream, {});
    const std::string report = metrics.report({});
    EXPECT_THAT(report, HasSubstr("camera_hub_web_stills_total{for=\"api\"} 1\n"));
    EXPECT_THAT(report, HasSubstr("camera_hub_web_stills_total{for=\"url\"} 0\n"));
    EXPECT_THAT(report, HasSubstr("camera_hub_web_stills_total{for=\"stream\"} 2\n"));
}

TEST(MetricsTest, FailuresAreCountedByKind) {
    Metrics metrics;
    metrics.countFailure(TakeFailureKind::HubAway);
    EXPECT_THAT(metrics.report({}), HasSubstr("camera_hub_web_failures_total{kind=\"hub-away\"} 1\n"));
    EXPECT_THAT(metrics.report({}), HasSubstr("camera_hub_web_failures_total{kind=\"camera-failed\"} 0\n"));
}

TEST(MetricsTest, EveryLimitCountsWhatIsBelowIt) {
    Metrics metrics;
    metrics.countTime(Metrics::Step::Encode, microseconds(3'000));
    metrics.countTime(Metrics::Step::Encode, microseconds(20'000'000));
    const std::string report = metrics.report({});
    EXPECT_THAT(report, HasSubstr("_bucket{step=\"encode\",le=\"0.0025\"} 0\n"));
    EXPECT_THAT(report, HasSubstr("_bucket{step=\"encode\",le=\"0.005\"} 1\n"));
    EXPECT_THAT(report, HasSubstr("_bucket{step=\"encode\",le=\"10\"} 1\n"));
    EXPECT_THAT(report, HasSubstr("_bucket{step=\"encode\",le=\"+Inf\"} 2\n"));
    EXPECT_THAT(report, HasSubstr("_count{step=\"encode\"} 2\n"));
    EXPECT_THAT(report, HasSubstr("_sum{step=\"encode\"} 20.003\n"));
}

TEST(MetricsTest, AHubThatIsAwayHasNoCameras) {
    MetricsNow now;
    now.hub.cameras.resize(2);
    EXPECT_THAT(Metrics().report(now), HasSubstr("\ncamera_hub_web_cameras 0\n"));
    now.hub.isReachable = true;
    EXPECT_THAT(Metrics().report(now), HasSubstr("\ncamera_hub_web_cameras 2\n"));
}

} // namespace
} // namespace CameraHubWeb
