#include "Platform/Interface/AsyncWait.h"
#include "Platform/Simulated/SimulatedPlatform.h"
#include "Tests/Platform/Interface/PlatformContract.h"
#include "Tests/Platform/Simulated/SimulatedFixture.h"
#include "Tests/Support/ScenarioFile.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace {

class BuiltInCamera final : public PlatformUnderTest {
public:
    std::shared_ptr<Platform::CameraPlatform> platform() override {
        return Platform::Simulated::createSimulatedPlatform({});
    }
    bool unplug() override { return false; }
    void plugIn() override {}
    bool holdStills() override { return false; }
};

/// Two sources of one device, with a node and a container.
std::string scenario(const std::string& camera) {
    return R"({"groups": [{"id": "G", "displayName": "Group", "sources": [
            {"id": "S", "device": {"id": "D", "name": "Cam", "properties": {
                "System.Devices.DeviceInstanceId": "N",
                "System.Devices.ContainerId": "{0f8fad5b-d9cb-469f-a165-70867728950e}"}},
             "profiles": [{"width": 32, "height": 24}, {"width": 64, "height": 48, "subtype": "YUY2"}]},
            {"id": "R", "streamType": "VideoRecord", "device": {"id": "D"}, "sourceInfo2": false}]}],
        "deviceNodes": [{"id": "N"}],
        "containers": [{"id": "{0F8FAD5B-D9CB-469F-A165-70867728950E}"}],
        "cameras": {"D": )" +
           camera + "}}";
}

class ScenarioCamera final : public PlatformUnderTest {
public:
    explicit ScenarioCamera(std::string camera) : _camera(std::move(camera)), _file(scenario(_camera)) {}

    std::shared_ptr<Platform::CameraPlatform> platform() override {
        const auto platform = Platform::Simulated::createSimulatedPlatform(_file.path());
        _platform = platform;
        return platform;
    }
    bool unplug() override {
        _file.replace(unpluggedScenario());
        return waitUntil([&] { return cameras() == 0; });
    }
    void plugIn() override {
        _file.replace(scenario(_camera));
        ASSERT_TRUE(waitUntil([&] { return cameras() == 1; }));
    }
    /// The camera takes its time; that the platform knows shows in its second group.
    bool holdStills() override {
        std::string held = scenario(R"({"capture": {"delayMs": )" + std::to_string(heldFor.count()) + "}}");
        held.replace(held.rfind("]}],"), 4, R"(]}, {"id": "Held", "sources": []}],)");
        _file.replace(held);
        return waitUntil([&] { return cameras() == 2; });
    }

private:
    std::uint32_t cameras() const { return Platform::blockingWait(_platform.lock()->FindAllAsync()).Size(); }

    const std::string _camera;
    const ScenarioFile _file;
    std::weak_ptr<Platform::CameraPlatform> _platform;
};

constexpr const char* olderControls = R"({
    "exposure": {"supported": true, "min": -10, "max": 0, "step": 1, "value": -5},
    "focus": {"supported": true, "max": 250, "step": 5, "autoModeSupported": false},
    "whiteBalance": {"supported": true, "min": 2800, "max": 6500, "step": 10, "value": 4000}})";

constexpr const char* newerControls = R"({
    "exposureControl": {"supported": true}, "focusControl": {"supported": true},
    "whiteBalanceControl": {"supported": true}, "isoSpeedControl": {"supported": true, "auto": true},
    "exposureCompensationControl": {"supported": true, "value": 0.5}})";

std::function<std::unique_ptr<PlatformUnderTest>()> withCamera(const std::string& camera) {
    return [camera] { return std::make_unique<ScenarioCamera>(camera); };
}

INSTANTIATE_TEST_SUITE_P(
    Simulated, PlatformContract,
    testing::Values(PlatformUnderTestCase{"BuiltIn", [] { return std::make_unique<BuiltInCamera>(); }},
                    PlatformUnderTestCase{"OlderControls", withCamera(olderControls)},
                    PlatformUnderTestCase{"NewerControls", withCamera(newerControls)},
                    PlatformUnderTestCase{"SlowStills", withCamera(R"({"capture": {"delayMs": 50}})")}),
    [](const auto& tested) { return tested.param.name; });

} // namespace
