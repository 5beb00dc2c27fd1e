#include "Platform/Interface/AsyncWait.h"
#include "Platform/Simulated/SimulatedPlatform.h"
#include "Tests/Platform/Interface/PlatformContract.h"
#include "Tests/Platform/Simulated/SimulatedFixture.h"
#include "Tests/Support/ScenarioFile.h"

#include <memory>
#include <string>

namespace {

class BuiltInCamera final : public PlatformUnderTest {
public:
    std::shared_ptr<Platform::CameraPlatform> platform() override {
        return Platform::Simulated::createSimulatedPlatform({});
    }
    bool unplug() override { return false; }
};

class ScenarioCamera final : public PlatformUnderTest {
public:
    explicit ScenarioCamera(const std::string& camera) : _file(cameraScenario(camera)) {}

    std::shared_ptr<Platform::CameraPlatform> platform() override {
        return _platform = Platform::Simulated::createSimulatedPlatform(_file.path());
    }
    bool unplug() override {
        _file.replace(unpluggedScenario());
        return waitUntil([&] { return Platform::blockingWait(_platform->FindAllAsync()).Size() == 0; });
    }

private:
    const ScenarioFile _file;
    std::shared_ptr<Platform::CameraPlatform> _platform;
};

INSTANTIATE_TEST_SUITE_P(
    Simulated, PlatformContract,
    testing::Values(PlatformUnderTestCase{"BuiltIn", [] { return std::make_unique<BuiltInCamera>(); }},
                    PlatformUnderTestCase{"Scenario", [] { return std::make_unique<ScenarioCamera>("{}"); }},
                    PlatformUnderTestCase{
                        "SlowScenario",
                        [] { return std::make_unique<ScenarioCamera>(R"({"capture": {"delayMs": 50}})"); }}),
    [](const auto& tested) { return tested.param.name; });

} // namespace
