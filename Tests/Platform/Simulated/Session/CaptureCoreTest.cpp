#include "Platform/Simulated/Session/CaptureCore.h"

#include "Platform/Simulated/Scenario/ScenarioReader.h"
#include "Tests/Platform/Simulated/SimulatedFixture.h"

using namespace Platform::Simulated;

namespace {

TEST(CaptureCoreTest, ACallThatBeganBeforeTheCaptureWasInitialisedRaisesAlsoIfItGoesOnAfterwards) {
    const auto simulation = std::make_shared<Simulation>();
    simulation->takeOver(builtInScenario());
    const auto scenario = simulation->scenario();
    CaptureCore core(simulation);
    const auto before = core.camera();
    core.open(partOf(scenario, scenario->groups.front()), Platform::PhotoCaptureSource::VideoPreview);
    EXPECT_TRUE(outcomeOf([&] { core.requireOpen("Use", before); }).raised);
    EXPECT_FALSE(outcomeOf([&] { core.requireOpen("Use", core.camera()); }).raised);
}

} // namespace
