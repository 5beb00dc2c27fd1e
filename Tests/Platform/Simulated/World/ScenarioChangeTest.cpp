#include "Tests/Platform/Simulated/SimulatedFixture.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

using namespace Platform;
using std::chrono::milliseconds;

namespace {

/// What a changed scenario does to captures that are open, and to the state that has come about since.
class ScenarioChangeTest : public SimulatedFixture {};

TEST_F(ScenarioChangeTest, AStillOfACameraThatGoesNeverCompletes) {
    start(cameraScenario(R"({"capture": {"delayMs": 1500}})"));
    const MediaCapture capture = open();
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto flag = CompletionFlag::of(takeStill(capture, stream));
    file.replace(unpluggedScenario());
    ASSERT_TRUE(waitUntil([&] { return groupCount() == 0; }));
    file.replace(cameraScenario()); // back before the delay is over
    ASSERT_TRUE(waitUntil([&] { return groupCount() == 1; }));
    EXPECT_FALSE(flag->waitUntil(std::chrono::steady_clock::now() + milliseconds(1700)));
    EXPECT_EQ(stream->Size(), 0U);
    EXPECT_EQ(journal.linesOf("MediaCapture.CapturePhotoToStreamAsync").size(), 1U);
}

TEST_F(ScenarioChangeTest, ACameraThatComesBackIsThereAgainForOpenCaptures) {
    start(cameraScenario());
    const MediaCapture capture = open();
    file.replace(unpluggedScenario());
    ASSERT_TRUE(waitUntil([&] { return outcomeOf([&] { capture->FrameSources(); }).raised; }));
    EXPECT_EQ(outcomeOf([&] { capture->FrameSources(); }).code, winrt::result::notFound);
    EXPECT_EQ(outcomeOf([&] { open(); }).raised, true);
    file.replace(cameraScenario());
    ASSERT_TRUE(waitUntil([&] { return !outcomeOf([&] { capture->FrameSources(); }).raised; }));
    EXPECT_EQ(still(capture).width, 32U);
}

TEST_F(ScenarioChangeTest, AChangeIsTakenOverByOpenCaptures) {
    start(cameraScenario());
    const MediaCapture capture = open();
    EXPECT_FALSE(capture->VideoDeviceController()->Focus()->Capabilities().Supported);
    file.replace(cameraScenario(R"({"focus": {"supported": true}})"));
    EXPECT_TRUE(waitUntil([&] { return capture->VideoDeviceController()->Focus()->Capabilities().Supported; }));
}

TEST_F(ScenarioChangeTest, AControlKeepsItsValueUnlessItsObjectChanged) {
    const std::string focus = R"("focus": {"supported": true, "max": 9, "value": 1})";
    const std::string other = R"("contrast": {"supported": true, "max": 9, "value": )";
    start(cameraScenario("{" + focus + ", " + other + "1}}"));
    const MediaCapture capture = open();
    const auto controller = capture->VideoDeviceController();
    const auto valueOf = [](const MediaDeviceControl& control) {
        double value = -1;
        control->TryGetValue(value);
        return value;
    };
    controller->Focus()->TrySetValue(7);
    controller->Contrast()->TrySetValue(7);
    file.replace(cameraScenario("{" + focus + ", " + other + "3}}"));
    EXPECT_TRUE(waitUntil([&] { return valueOf(controller->Contrast()) == 3; }));
    EXPECT_EQ(valueOf(controller->Focus()), 7);
}

TEST_F(ScenarioChangeTest, ANewerControlKeepsItsValueUnlessItsObjectChanged) {
    const auto scenario = [](const std::string& first, const std::string& speed, const std::string& mark) {
        return cameraScenario(R"({"focusControl": {"supported": true, "preset": )" + first +
                              R"(}, "whiteBalanceControl": {"supported": true, "preset": )" + first +
                              R"(}, "isoSpeedControl": {"supported": true, "value": )" + speed +
                              R"(}, "exposureControl": {"supported": true, "value": )" + speed +
                              R"(000}, "contrast": {"supported": )" + mark + "}}");
    };
    start(scenario("3", "200", "false"));
    const MediaCapture capture = open();
    const auto controller = capture->VideoDeviceController();
    const auto values = [&] {
        return std::vector<std::int64_t>{static_cast<int>(controller->FocusControl()->Preset()),
                                         static_cast<int>(controller->WhiteBalanceControl()->Preset()),
                                         controller->IsoSpeedControl()->Value(),
                                         controller->ExposureControl()->Value().count()};
    };
    EXPECT_EQ(values(), (std::vector<std::int64_t>{3, 3, 200, 200000}));
    blockingWait(controller->FocusControl()->SetPresetAsync(FocusPreset::Auto));
    blockingWait(controller->WhiteBalanceControl()->SetPresetAsync(ColorTemperaturePreset::Auto));
    blockingWait(controller->IsoSpeedControl()->SetValueAsync(700));
    blockingWait(controller->ExposureControl()->SetValueAsync(TimeSpan(500000)));
    file.replace(scenario("3", "200", "true"));
    ASSERT_TRUE(waitUntil([&] { return controller->Contrast()->Capabilities().Supported; }));
    EXPECT_EQ(values(), (std::vector<std::int64_t>{0, 0, 700, 500000}));
    file.replace(scenario("4", "300", "true"));
    EXPECT_TRUE(waitUntil([&] { return values() == std::vector<std::int64_t>{4, 4, 300, 300000}; }));
}

TEST_F(ScenarioChangeTest, FaultCountersStartAgain) {
    const auto scenario = [](int times) {
        return cameraScenario(R"({"faults": {"MediaCapture.FrameSources": {"times": )" + std::to_string(times) + "}}}");
    };
    start(scenario(1));
    const MediaCapture capture = open();
    const auto raises = [&] { return outcomeOf([&] { capture->FrameSources(); }).raised; };
    EXPECT_TRUE(raises());
    EXPECT_FALSE(raises());
    file.replace(scenario(1)); // the same text, written anew
    EXPECT_TRUE(waitUntil(raises));
    EXPECT_FALSE(raises());
}

TEST_F(ScenarioChangeTest, AnotherJournalIsTakenOver) {
    start(cameraScenario());
    group();
    ASSERT_FALSE(journal.lines().empty());
    file.replace(R"({"journal": "other.txt"})");
    const JournalReader other(file.folder() / "other.txt");
    EXPECT_TRUE(waitUntil([&] {
        groupCount();
        return !other.lines().empty();
    }));
    const std::size_t before = journal.lines().size();
    groupCount();
    EXPECT_EQ(journal.lines().size(), before);
}

} // namespace
