#include "Tests/Platform/Simulated/SimulatedFixture.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <string>

using namespace Platform;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

/// The scenario of a fault at one place, with all controls of the newer generation.
std::string faultScenario(const std::string& place, const std::string& operation, const std::string& fault) {
    const std::string faults = R"("faults": {")" + operation + R"(": )" + fault + "}";
    const auto at = [&](const char* where) { return place == where ? ", " + faults : std::string(); };
    return R"({"groups": [{"id": "G", "sources": [{"id": "S", "device": {"id": "D"},
        "profiles": [{"width": 8, "height": 8}]}])" +
           at("group") + R"(}], "deviceNodes": [{"id": "node"}], "journal": "journal.txt",
        "cameras": {"D": {"exposureControl": {"supported": true}, "focusControl": {"supported": true},
            "whiteBalanceControl": {"supported": true}, "isoSpeedControl": {"supported": true})" +
           at("camera") + "}}" + at("top") + "}";
}

/// Everything that an operation may need, made beforehand with the operation passing untouched.
struct Objects {
    std::shared_ptr<CameraPlatform> platform;
    MediaFrameSourceGroup group;
    MediaCapture fresh;
    MediaCapture capture;
    MediaFrameSource source;
    MediaFrameReader reader;
    VideoDeviceController controller;
    DeviceWatcher watcher;
};

struct FaultyOperation {
    std::string place;
    std::function<void(Objects&)> call;
    int callsBefore; // that making the objects takes
};

const std::map<std::string, FaultyOperation>& operations() {
    static const std::map<std::string, FaultyOperation> all{
        {"MediaFrameSourceGroup.GetDeviceSelector", {"top", [](Objects& o) { o.platform->GetDeviceSelector(); }, 1}},
        {"DeviceInformation.CreateWatcher",
         {"top", [](Objects& o) { o.platform->CreateWatcher(o.platform->GetDeviceSelector()); }, 1}},
        {"DeviceWatcher.Start", {"top", [](Objects& o) { o.watcher->Start(); }, 0}},
        {"MediaFrameSourceGroup.FindAllAsync",
         {"top", [](Objects& o) { blockingWait(o.platform->FindAllAsync()); }, 1}},
        {"DeviceInformation.CreateFromIdAsync",
         {"top",
          [](Objects& o) { blockingWait(o.platform->CreateFromIdAsync(u"node", {}, DeviceInformationKind::Device)); },
          0}},
        {"MediaFrameSourceGroup.FromIdAsync",
         {"group", [](Objects& o) { blockingWait(o.platform->FromIdAsync(u"G")); }, 0}},
        {"MediaCapture.InitializeAsync",
         {"camera", [](Objects& o) { blockingWait(o.fresh->InitializeAsync({o.group, {}, {}})); }, 1}},
        {"MediaCapture.FrameSources", {"camera", [](Objects& o) { o.capture->FrameSources(); }, 1}},
        {"MediaFrameSource.SetFormatAsync",
         {"camera", [](Objects& o) { blockingWait(o.source->SetFormatAsync(o.source->SupportedFormats().GetAt(0))); },
          0}},
        {"MediaCapture.CreateFrameReaderAsync",
         {"camera", [](Objects& o) { blockingWait(o.capture->CreateFrameReaderAsync(o.source)); }, 1}},
        {"MediaFrameReader.StartAsync", {"camera", [](Objects& o) { blockingWait(o.reader->StartAsync()); }, 0}},
        {"MediaFrameReader.StopAsync", {"camera", [](Objects& o) { blockingWait(o.reader->StopAsync()); }, 0}},
        {"MediaCapture.Close", {"camera", [](Objects& o) { o.capture->Close(); }, 0}},
        {"MediaCapture.CapturePhotoToStreamAsync",
         {"camera",
          [](Objects& o) {
              blockingWait(o.capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(),
                                                                std::make_shared<InMemoryRandomAccessStream>()));
          },
          0}},
        {"VideoDeviceController", {"camera", [](Objects& o) { o.capture->VideoDeviceController(); }, 1}},
        {"MediaDeviceControl.Capabilities",
         {"camera", [](Objects& o) { o.controller->Exposure()->Capabilities(); }, 0}},
        {"ExposureControl.SetAutoAsync",
         {"camera", [](Objects& o) { blockingWait(o.controller->ExposureControl()->SetAutoAsync(true)); }, 0}},
        {"ExposureControl.SetValueAsync",
         {"camera", [](Objects& o) { blockingWait(o.controller->ExposureControl()->SetValueAsync(TimeSpan(5000))); },
          0}},
        {"FocusControl.SetPresetAsync",
         {"camera", [](Objects& o) { blockingWait(o.controller->FocusControl()->SetPresetAsync({})); }, 0}},
        {"WhiteBalanceControl.SetPresetAsync",
         {"camera", [](Objects& o) { blockingWait(o.controller->WhiteBalanceControl()->SetPresetAsync({})); }, 0}},
        {"IsoSpeedControl.SetValueAsync",
         {"camera", [](Objects& o) { blockingWait(o.controller->IsoSpeedControl()->SetValueAsync(100)); }, 0}},
    };
    return all;
}

class SimulatedFaultsTest : public SimulatedFixture, public testing::WithParamInterface<std::string> {
protected:
    const FaultyOperation& operation() const { return operations().at(GetParam()); }

    void prepare(const std::string& fault) {
        const std::string after = R"({"after": )" + std::to_string(operation().callsBefore) + fault + "}";
        start(faultScenario(operation().place, GetParam(), after));
        objects.platform = platform;
        objects.watcher = platform->CreateWatcher(platform->GetDeviceSelector());
        objects.group = group();
        objects.fresh = platform->CreateMediaCapture();
        objects.capture = platform->CreateMediaCapture();
        blockingWait(objects.capture->InitializeAsync({objects.group, {}, {}}));
        objects.source = objects.capture->FrameSources().Lookup(u"S");
        objects.reader = blockingWait(objects.capture->CreateFrameReaderAsync(objects.source));
        objects.controller = objects.capture->VideoDeviceController();
    }
    Outcome call() {
        return outcomeOf([&] { operation().call(objects); });
    }

    Objects objects;
};

TEST_P(SimulatedFaultsTest, RaisesTheTextAndTheCodeForTheCallsThatAreHit) {
    prepare(R"(, "times": 1, "message": "it broke", "code": -2147024726)");
    const Outcome outcome = call();
    EXPECT_TRUE(outcome.raised);
    EXPECT_EQ(outcome.message, u"it broke");
    EXPECT_EQ(outcome.code, winrt::result::busy);
    EXPECT_FALSE(call().raised);
    const auto lines = journal.linesOf(GetParam());
    std::size_t errors = 0;
    for (const JournalLine& line : lines)
        if (line.hasError()) {
            EXPECT_EQ(line.json["error"].asInt(), -2147024726);
            ++errors;
        }
    EXPECT_EQ(errors, 1U);
}

TEST_P(SimulatedFaultsTest, TakesItsDelayBeforeItRaises) {
    prepare(R"(, "times": 1, "delayMs": 40)");
    const auto begin = steady_clock::now();
    EXPECT_TRUE(call().raised);
    EXPECT_GE(steady_clock::now() - begin, milliseconds(40));
}

TEST_P(SimulatedFaultsTest, IsOnlySlowWhereItDoesNotFail) {
    prepare(R"(, "times": 1, "delayMs": 40, "fails": false)");
    const auto begin = steady_clock::now();
    EXPECT_FALSE(call().raised);
    EXPECT_GE(steady_clock::now() - begin, milliseconds(40));
}

std::vector<std::string> operationNames() {
    std::vector<std::string> names;
    for (const auto& [name, operation] : operations())
        names.push_back(name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Every, SimulatedFaultsTest, testing::ValuesIn(operationNames()), [](const auto& tested) {
    std::string name = tested.param;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

class SimulatedFaultTest : public SimulatedFixture {};

TEST_F(SimulatedFaultTest, HitsAllCallsThatFollowUnlessTimesIsGiven) {
    start(cameraScenario(R"({"faults": {"MediaCapture.FrameSources": {"after": 2}}})"));
    const MediaCapture capture = open();
    std::string pattern;
    for (int i = 0; i < 6; ++i)
        pattern += outcomeOf([&] { capture->FrameSources(); }).raised ? '!' : '.';
    EXPECT_EQ(pattern, "..!!!!");
}

TEST_F(SimulatedFaultTest, HitsAsManyCallsAsItSays) {
    start(cameraScenario(R"({"faults": {"MediaCapture.FrameSources": {"after": 1, "times": 2}}})"));
    const MediaCapture capture = open();
    std::string pattern;
    for (int i = 0; i < 6; ++i)
        pattern += outcomeOf([&] { capture->FrameSources(); }).raised ? '!' : '.';
    EXPECT_EQ(pattern, ".!!...");
}

TEST_F(SimulatedFaultTest, OfAStillIsRaisedByTheCallItself) {
    start(cameraScenario(R"({"faults": {"MediaCapture.CapturePhotoToStreamAsync": {"code": -5}}})"));
    const MediaCapture capture = open();
    EXPECT_EQ(outcomeOf([&] { takeStill(capture, std::make_shared<InMemoryRandomAccessStream>()); }).code, -5);
    const auto lines = journal.linesOf("MediaCapture.CapturePhotoToStreamAsync");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].json["error"].asInt(), -5);
    EXPECT_FALSE(lines[0].hasEnded());
}

TEST_F(SimulatedFaultTest, OfCloseHitsACameraThatHasGoneToo) {
    start(cameraScenario(R"({"faults": {"MediaCapture.Close": {"times": 1}}})"));
    const MediaCapture capture = open();
    EXPECT_TRUE(outcomeOf([&] { capture->Close(); }).raised);
    EXPECT_FALSE(outcomeOf([&] { capture->Close(); }).raised);
}

TEST_F(SimulatedFaultTest, OfASlowCameraDelaysNoOther) {
    start(R"({"groups": [
        {"id": "G1", "sources": [{"id": "S", "device": {"id": "D1"}, "formats": [{"width": 8, "height": 8}]}]},
        {"id": "G2", "sources": [{"id": "S", "device": {"id": "D2"}, "formats": [{"width": 8, "height": 8}]}]}],
        "cameras": {"D1": {"faults": {"MediaCapture.InitializeAsync": {"delayMs": 3600000}}}}})");
    const MediaCapture slow = platform->CreateMediaCapture();
    const auto pending = slow->InitializeAsync({group(0), {}, {}});
    const MediaCapture other = platform->CreateMediaCapture();
    blockingWait(other->InitializeAsync({group(1), {}, {}}));
    EXPECT_EQ(still(other).width, 8U);
    EXPECT_EQ(pending.Status(), AsyncStatus::Started);
}

} // namespace
