#include "Platform/Simulated/Session/CaptureCore.h"

#include "Platform/Simulated/Scenario/ScenarioReader.h"
#include "Tests/Platform/Simulated/SimulatedFixture.h"

using namespace Platform::Simulated;

namespace {

TEST(CaptureCore, ACallThatBeganBeforeTheCaptureWasInitialisedRaisesAlsoIfItGoesOnAfterwards) {
    const auto simulation = std::make_shared<Simulation>();
    simulation->takeOver(builtInScenario());
    const auto scenario = simulation->scenario();
    CaptureCore session(simulation);
    const auto before = session.camera();
    session.open(partOf(scenario, scenario->groups.front()), Platform::PhotoCaptureSource::VideoPreview);
    EXPECT_TRUE(outcomeOf([&] { session.requireOpen("Use", before); }).raised);
    EXPECT_FALSE(outcomeOf([&] { session.requireOpen("Use", session.camera()); }).raised);
}

} // namespace
