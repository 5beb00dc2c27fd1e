#include "Tests/Platform/Simulated/SimulatedFixture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace Platform;

namespace {

class JournalTest : public SimulatedFixture {
protected:
    JournalLine last() { return journal.lines().back(); }
    static Json::Value json(const std::string& text) {
        Json::Value value;
        std::istringstream(text) >> value;
        return value;
    }
    /// Checks a line against its members, the time and the thread left out.
    static void expectLine(JournalLine line, const std::string& expected) {
        EXPECT_TRUE(line.json["t"].isDouble());
        EXPECT_TRUE(line.json["thread"].isString());
        line.json.removeMember("t");
        line.json.removeMember("thread");
        EXPECT_EQ(line.json, json(expected)) << line.json.toStyledString();
    }
    /// Checks both lines of the last asynchronous call.
    void expectLastTwo(const std::string& first, const std::string& second) {
        const auto lines = journal.lines();
        ASSERT_GE(lines.size(), 2U);
        expectLine(lines[lines.size() - 2], first);
        expectLine(lines.back(), second);
    }
};

TEST_F(JournalTest, ASynchronousCallHasOneLineWithItsResult) {
    start(cameraScenario(
        R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "refuse": ["TryGetAuto"]}})"));
    const MediaCapture capture = open();
    const auto control = capture->VideoDeviceController()->Exposure();
    const std::size_t before = journal.lines().size();
    control->TrySetValue(-4);
    ASSERT_EQ(journal.lines().size(), before + 1);
    expectLine(last(), R"({"device": "D", "call": "MediaDeviceControl.TrySetValue", "control": "Exposure",
                           "args": [-4.0], "result": true})");
    double value = 0;
    control->TryGetValue(value);
    expectLine(last(),
               R"({"device": "D", "call": "MediaDeviceControl.TryGetValue", "control": "Exposure", "result": true})");
    control->TrySetAuto(true);
    expectLine(last(), R"({"device": "D", "call": "MediaDeviceControl.TrySetAuto", "control": "Exposure",
                           "args": [true], "result": true})");
    bool on = false;
    control->TryGetAuto(on);
    expectLine(last(),
               R"({"device": "D", "call": "MediaDeviceControl.TryGetAuto", "control": "Exposure", "result": false})");
    control->Capabilities();
    expectLine(last(), R"({"device": "D", "call": "MediaDeviceControl.Capabilities", "control": "Exposure",
                           "result": {"Supported": true, "AutoModeSupported": true, "Min": -13.0, "Max": 0.0, "Step": 1.0}})");
}

TEST_F(JournalTest, EachOlderControlHasItsName) {
    start(cameraScenario());
    const MediaCapture capture = open();
    const auto controller = capture->VideoDeviceController();
    const auto nameOf = [&](const MediaDeviceControl& control) {
        control->Capabilities();
        return last().control;
    };
    EXPECT_EQ(nameOf(controller->Exposure()), "Exposure");
    EXPECT_EQ(nameOf(controller->Focus()), "Focus");
    EXPECT_EQ(nameOf(controller->WhiteBalance()), "WhiteBalance");
    EXPECT_EQ(nameOf(controller->Brightness()), "Brightness");
    EXPECT_EQ(nameOf(controller->Contrast()), "Contrast");
}

TEST_F(JournalTest, NotANumberIsText) {
    start(cameraScenario(R"({"exposure": {"supported": true, "max": 1}})"));
    const MediaCapture capture = open();
    const auto control = capture->VideoDeviceController()->Exposure();
    control->TrySetValue(std::nan(""));
    EXPECT_EQ(last().json["args"], json(R"(["nan"])"));
    EXPECT_FALSE(last().json["result"].asBool());
    control->TrySetValue(-std::numeric_limits<double>::infinity());
    EXPECT_EQ(last().json["args"], json(R"(["-inf"])"));
}

TEST_F(JournalTest, AFailedSynchronousCallHasItsCode) {
    start(cameraScenario());
    outcomeOf([&] { platform->CreateMediaCapture()->FrameSources(); });
    expectLine(last(), R"({"call": "MediaCapture.FrameSources", "error": )" +
                           std::to_string(winrt::result::illegalMethodCall) + "}");
}

TEST_F(JournalTest, AnAsynchronousCallHasALineAtItsBeginAndOneAtItsEnd) {
    start(cameraScenario());
    const auto first = group();
    expectLastTwo(R"({"call": "MediaFrameSourceGroup.FindAllAsync"})",
                  R"({"call": "MediaFrameSourceGroup.FindAllAsync", "ended": true, "result": ["G"]})");
    const MediaCapture capture = platform->CreateMediaCapture();
    blockingWait(capture->InitializeAsync({first, PhotoCaptureSource::VideoPreview, StreamingCaptureMode::Video}));
    expectLastTwo(
        R"({"device": "D", "call": "MediaCapture.InitializeAsync", "args": ["G", 1, 2]})",
        R"({"device": "D", "call": "MediaCapture.InitializeAsync", "args": ["G", 1, 2], "ended": true, "result": null})");
}

TEST_F(JournalTest, AFailedAsynchronousCallHasItsCodeAtItsEnd) {
    start(cameraScenario());
    outcomeOf([&] { blockingWait(platform->FromIdAsync(u"none")); });
    expectLastTwo(R"({"call": "MediaFrameSourceGroup.FromIdAsync", "args": ["none"]})",
                  R"({"call": "MediaFrameSourceGroup.FromIdAsync", "args": ["none"], "ended": true, "error": )" +
                      std::to_string(winrt::result::notFound) + "}");
}

TEST_F(JournalTest, ArgumentsAreThoseOfTheCall) {
    start(cameraScenario(R"({"focusControl": {"supported": true}, "whiteBalanceControl": {"supported": true},
        "exposureControl": {"supported": true}, "isoSpeedControl": {"supported": true}})"));
    const MediaCapture capture = open();
    const auto argumentsOf = [&](const std::string& call) { return journal.linesOf(call).back().json["args"]; };
    const auto source = capture->FrameSources().Lookup(u"S");
    blockingWait(source->SetFormatAsync(source->SupportedFormats().GetAt(0)));
    EXPECT_EQ(argumentsOf("MediaFrameSource.SetFormatAsync"), json(R"(["S", 0])"));
    const auto reader = blockingWait(capture->CreateFrameReaderAsync(source));
    EXPECT_EQ(argumentsOf("MediaCapture.CreateFrameReaderAsync"), json(R"(["S"])"));
    outcomeOf([&] { blockingWait(capture->CreateFrameReaderAsync(nullptr)); });
    EXPECT_EQ(argumentsOf("MediaCapture.CreateFrameReaderAsync"), json("[null]"));
    reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Buffered);
    EXPECT_EQ(argumentsOf("MediaFrameReader.AcquisitionMode"), json("[1]"));
    const auto controller = capture->VideoDeviceController();
    blockingWait(controller->FocusControl()->SetPresetAsync(FocusPreset::AutoMacro));
    EXPECT_EQ(argumentsOf("FocusControl.SetPresetAsync"), json("[2]"));
    blockingWait(controller->WhiteBalanceControl()->SetPresetAsync(ColorTemperaturePreset::Cloudy));
    EXPECT_EQ(argumentsOf("WhiteBalanceControl.SetPresetAsync"), json("[2]"));
    blockingWait(controller->ExposureControl()->SetAutoAsync(false));
    EXPECT_EQ(argumentsOf("ExposureControl.SetAutoAsync"), json("[false]"));
    blockingWait(controller->ExposureControl()->SetValueAsync(TimeSpan(5000)));
    EXPECT_EQ(argumentsOf("ExposureControl.SetValueAsync"), json("[5000]"));
    blockingWait(controller->IsoSpeedControl()->SetValueAsync(200));
    EXPECT_EQ(argumentsOf("IsoSpeedControl.SetValueAsync"), json("[200]"));
    outcomeOf([&] { blockingWait(platform->CreateFromIdAsync(u"n", {u"P", u"Q"}, DeviceInformationKind::Device)); });
    EXPECT_EQ(argumentsOf("DeviceInformation.CreateFromIdAsync"), json(R"(["n", 3, ["P", "Q"]])"));
}

TEST_F(JournalTest, ACaptureStandsInItCallByCall) {
    start(cameraScenario());
    MediaCapture capture = open();
    const auto reader = blockingWait(capture->CreateFrameReaderAsync(capture->FrameSources().Lookup(u"S")));
    reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Realtime);
    EXPECT_EQ(blockingWait(reader->StartAsync()), MediaFrameReaderStartStatus::Success);
    still(capture);
    blockingWait(reader->StopAsync());
    capture->Close();
    capture.reset(); // releasing is no call
    EXPECT_EQ(journal.calls(),
              (std::vector<std::string>{"MediaFrameSourceGroup.FindAllAsync", "MediaCapture.InitializeAsync",
                                        "MediaCapture.FrameSources", "MediaCapture.CreateFrameReaderAsync",
                                        "MediaFrameReader.AcquisitionMode", "MediaFrameReader.StartAsync",
                                        "MediaCapture.CapturePhotoToStreamAsync", "MediaFrameReader.StopAsync",
                                        "MediaCapture.Close"}));
    for (const JournalLine& line : journal.lines())
        EXPECT_EQ(line.device, line.call == "MediaFrameSourceGroup.FindAllAsync" ? "" : "D") << line.call;
    EXPECT_EQ(journal.linesOf("MediaFrameReader.StartAsync").back().json["result"].asInt(), 0);
    EXPECT_EQ(journal.linesOf("MediaCapture.CapturePhotoToStreamAsync").size(), 2U);
    EXPECT_EQ(journal.linesOf("MediaCapture.Close").size(), 1U);
    EXPECT_TRUE(journal.linesOf("MediaCapture.Close")[0].hasResult());
}

TEST_F(JournalTest, ReleasingACaptureWithoutCloseStandsInNoLine) {
    start(cameraScenario());
    open().reset();
    EXPECT_TRUE(journal.linesOf("MediaCapture.Close").empty());
}

TEST_F(JournalTest, TheWatcherStandsInIt) {
    start(cameraScenario());
    const auto watcher = platform->CreateWatcher(platform->GetDeviceSelector());
    watcher->Start();
    ASSERT_TRUE(journal.waitForCall("DeviceWatcher.Added"));
    EXPECT_EQ(journal.linesOf("MediaFrameSourceGroup.GetDeviceSelector").size(), 1U);
    EXPECT_EQ(journal.linesOf("DeviceInformation.CreateWatcher").size(), 1U);
    EXPECT_EQ(journal.linesOf("DeviceWatcher.Start").size(), 1U);
    expectLine(journal.linesOf("DeviceWatcher.Added")[0], R"({"device": "G", "call": "DeviceWatcher.Added"})");
}

TEST_F(JournalTest, TimesAreSecondsOfTheSteadyClockInOrder) {
    const auto now = [] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
    };
    const double before = now();
    start(cameraScenario());
    for (int i = 0; i < 5; ++i)
        group();
    double previous = before - 1e-5;
    for (const JournalLine& line : journal.lines()) {
        EXPECT_GE(line.json["t"].asDouble(), previous);
        previous = line.json["t"].asDouble();
    }
    EXPECT_LE(previous, now() + 1e-5);
}

TEST_F(JournalTest, ThreadsAreToldApart) {
    start(cameraScenario());
    group();
    std::string other;
    std::thread([&] {
        platform->GetDeviceSelector();
        other = last().json["thread"].asString();
    }).join();
    platform->GetDeviceSelector();
    EXPECT_NE(last().json["thread"].asString(), other);
    EXPECT_EQ(last().json["thread"], journal.lines().front().json["thread"]);
}

TEST_F(JournalTest, AnExistingFileIsAppendedTo) {
    ScenarioFile::writeFile(file.journal(), "{\"call\": \"earlier\"}\n");
    start(cameraScenario());
    group();
    EXPECT_EQ(journal.calls(), (std::vector<std::string>{"earlier", "MediaFrameSourceGroup.FindAllAsync"}));
}

TEST_F(JournalTest, APipeIsWrittenToWhileItIsReadAndHasRoom) {
    ASSERT_EQ(mkfifo(file.journal().c_str(), 0600), 0);
    const int reader = ::open(file.journal().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    start(cameraScenario());
    for (int call = 0; call < 2000; ++call) // more than a pipe holds
        platform->GetDeviceSelector();
    std::string line(40, '\0');
    EXPECT_EQ(::read(reader, line.data(), line.size()), 40);
    EXPECT_TRUE(line.starts_with("{\"t\": ")) << line;
    ::close(reader);
}

TEST_F(JournalTest, APipeThatNobodyReadsIsAnErrorAtOnce) {
    ASSERT_EQ(mkfifo(file.journal().c_str(), 0600), 0);
    EXPECT_THROW(start(cameraScenario()), winrt::hresult_error);
}

TEST_F(JournalTest, LinesHaveTheFormOfTheContract) {
    start(cameraScenario(R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1}})"));
    const MediaCapture capture = open();
    capture->VideoDeviceController()->Exposure()->TrySetValue(-4);
    std::ifstream stream(file.journal());
    std::string line;
    for (std::string next; std::getline(stream, next);)
        line = next;
    const std::size_t device = line.find("\"device\"");
    EXPECT_EQ(line.rfind("{\"t\": ", 0), 0U);
    EXPECT_EQ(
        line.substr(device),
        R"("device": "D", "call": "MediaDeviceControl.TrySetValue", "control": "Exposure", "args": [-4.0], "result": true})");
}

} // namespace
