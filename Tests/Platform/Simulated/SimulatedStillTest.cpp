#include "Platform/Imaging/PngEncoder.h"
#include "Platform/Simulated/Picture/ChartCaption.h"
#include "Platform/Simulated/Picture/SceneExposure.h"
#include "Platform/Simulated/Picture/TestChart.h"
#include "Tests/Platform/Simulated/SimulatedFixture.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <string>

using namespace Platform;
using Platform::Imaging::RgbImage;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

/// A picture of many colours.
RgbImage gradient(std::uint32_t width, std::uint32_t height) {
    RgbImage image{width, height, {}};
    for (std::uint32_t i = 0; i < width * height; ++i)
        for (const std::uint32_t factor : {7U, 3U, 11U})
            image.pixels.push_back(static_cast<std::uint8_t>(i * factor));
    return image;
}

class SimulatedStillTest : public SimulatedFixture {
protected:
    void writePicture(const RgbImage& image) {
        const auto png = Imaging::encodePng(image);
        std::ofstream(file.folder() / "scene.png", std::ios::binary)
            .write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
    }
    static double brightness(const RgbImage& image) {
        double sum = 0;
        for (const std::uint8_t sample : image.pixels)
            sum += sample;
        return sum / static_cast<double>(image.pixels.size());
    }
};

const std::string exposure = R"("exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "value": -6})";
const std::string scene = R"("capture": {"picture": "scene.png"})";

TEST_F(SimulatedStillTest, HasTheSizeOfTheFormatInForce) {
    start(R"({"groups": [{"id": "G", "sources": [{"id": "S", "device": {"id": "D"},
        "formats": [{"width": 40, "height": 30}, {"width": 64, "height": 16}]}]}]})");
    const MediaCapture capture = open();
    EXPECT_EQ(still(capture).width, 40U);
    const auto source = capture->FrameSources().Lookup(u"S");
    blockingWait(source->SetFormatAsync(source->SupportedFormats().GetAt(1)));
    const RgbImage image = still(capture);
    EXPECT_EQ(image.width, 64U);
    EXPECT_EQ(image.height, 16U);
}

TEST_F(SimulatedStillTest, ComesFromTheKindOfSourceThatTheCaptureWasOpenedWith) {
    start(R"({"groups": [{"id": "G", "sources": [
        {"id": "P", "streamType": "Photo", "device": {"id": "D"}, "formats": [{"width": 48, "height": 8}]},
        {"id": "V", "device": {"id": "D"}, "formats": [{"width": 24, "height": 8}]}]}]})");
    EXPECT_EQ(still(open(PhotoCaptureSource::VideoPreview)).width, 24U);
    EXPECT_EQ(still(open(PhotoCaptureSource::Auto)).width, 48U);
}

TEST_F(SimulatedStillTest, ShowsTheTestChartOutsideTheCaption) {
    start(R"({"groups": [{"id": "G", "sources": [{"id": "S", "device": {"id": "D", "name": "Cam"},
        "formats": [{"width": 320, "height": 240}]}]}]})");
    const RgbImage image = still(open());
    const RgbImage chart = Simulated::drawTestChart(320, 240);
    const auto caption = Simulated::captionArea(320, 240);
    ASSERT_GT(caption.y, 0);
    const auto above = static_cast<std::ptrdiff_t>(caption.y) * 320 * 3;
    EXPECT_TRUE(std::equal(image.pixels.begin(), image.pixels.begin() + above, chart.pixels.begin()));
    EXPECT_NE(image.pixels, chart.pixels);
}

TEST_F(SimulatedStillTest, APictureOfTheSameSizeComesOutToTheLastBitAtTheNeutralExposure) {
    const RgbImage picture = gradient(32, 24);
    writePicture(picture);
    start(cameraScenario("{" + exposure + ", " + scene + "}"));
    EXPECT_EQ(still(open()).pixels, picture.pixels);
}

TEST_F(SimulatedStillTest, APictureOfAnotherSizeIsScaled) {
    writePicture(gradient(100, 50));
    start(cameraScenario("{" + scene + "}"));
    const RgbImage image = still(open());
    EXPECT_EQ(image.width, 32U);
    EXPECT_EQ(image.height, 24U);
}

TEST_F(SimulatedStillTest, APictureThatChangesOnDiskShowsInTheNextStill) {
    writePicture(gradient(32, 24));
    start(cameraScenario("{" + scene + "}"));
    const MediaCapture capture = open();
    still(capture);
    RgbImage other = gradient(32, 24);
    other.pixels[0] = 200;
    writePicture(other);
    std::filesystem::last_write_time(file.folder() / "scene.png",
                                     std::filesystem::file_time_type::clock::now() + std::chrono::seconds(5));
    EXPECT_EQ(still(capture).pixels, other.pixels);
}

TEST_F(SimulatedStillTest, APictureThatIsNoneEndsWithAnErrorAndAnEmptyStream) {
    ScenarioFile::writeFile(file.folder() / "scene.png", "no picture");
    start(cameraScenario("{" + scene + "}"));
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    EXPECT_TRUE(outcomeOf([&] { blockingWait(takeStill(open(), stream)); }).raised);
    EXPECT_EQ(stream->Size(), 0U);
}

TEST_F(SimulatedStillTest, OneStopDoublesTheLight) {
    RgbImage picture = gradient(32, 24);
    writePicture(picture);
    start(cameraScenario("{" + exposure + R"(, "capture": {"picture": "scene.png", "neutralExposure": -7}})"));
    const MediaCapture capture = open();
    Simulated::SceneExposure(1).apply(picture.pixels); // the exposure in force is -6
    EXPECT_EQ(still(capture).pixels, picture.pixels);
    capture->VideoDeviceController()->Exposure()->TrySetValue(-9);
    RgbImage darker = gradient(32, 24);
    Simulated::SceneExposure(-2).apply(darker.pixels);
    EXPECT_EQ(still(capture).pixels, darker.pixels);
}

TEST_F(SimulatedStillTest, ACameraWithoutExposureShowsTheSceneAsItIs) {
    const RgbImage picture = gradient(32, 24);
    writePicture(picture);
    start(cameraScenario(R"({"exposure": {"value": -1}, "capture": {"picture": "scene.png"}})"));
    EXPECT_EQ(still(open()).pixels, picture.pixels);
}

TEST_F(SimulatedStillTest, TheTestChartGetsBrighterWithTheExposure) {
    start(cameraScenario("{" + exposure + "}"));
    const MediaCapture capture = open();
    const auto control = capture->VideoDeviceController()->Exposure();
    const double neutral = brightness(still(capture));
    control->TrySetValue(-5);
    EXPECT_GT(brightness(still(capture)), neutral + 5);
    control->TrySetValue(-8);
    EXPECT_LT(brightness(still(capture)), neutral - 5);
}

TEST_F(SimulatedStillTest, TakesItsDelayFromTheCallToTheCompletion) {
    start(cameraScenario(R"({"capture": {"delayMs": 60}})"));
    const MediaCapture capture = open();
    const auto begin = steady_clock::now();
    still(capture);
    EXPECT_GE(steady_clock::now() - begin, milliseconds(60));
}

TEST_F(SimulatedStillTest, ASlowStillDelaysNothingElse) {
    start(cameraScenario(R"({"capture": {"delayMs": 3600000}})"));
    const MediaCapture capture = open();
    const auto pending = takeStill(capture, std::make_shared<InMemoryRandomAccessStream>());
    const auto reader = blockingWait(capture->CreateFrameReaderAsync(capture->FrameSources().Lookup(u"S")));
    blockingWait(reader->StartAsync());
    blockingWait(reader->StopAsync());
    EXPECT_EQ(pending.Status(), AsyncStatus::Started);
}

TEST_F(SimulatedStillTest, TheErrorOutcomeLeavesTheStreamEmpty) {
    start(cameraScenario(R"({"capture": {"outcome": "error"}})"));
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto pending = takeStill(open(), stream); // the call itself succeeds
    EXPECT_TRUE(outcomeOf([&] { blockingWait(pending); }).raised);
    EXPECT_EQ(stream->Size(), 0U);
}

TEST_F(SimulatedStillTest, TheNeverOutcomeNeverEndsAndTheNextStillDoes) {
    start(cameraScenario(R"({"capture": {"outcome": "never"}})"));
    const MediaCapture capture = open();
    const auto pending = takeStill(capture, std::make_shared<InMemoryRandomAccessStream>());
    file.replace(cameraScenario());
    EXPECT_TRUE(waitUntil([&] {
        const auto next = takeStill(capture, std::make_shared<InMemoryRandomAccessStream>());
        return CompletionFlag::of(next)->waitUntil(steady_clock::now() + milliseconds(50));
    }));
    EXPECT_EQ(pending.Status(), AsyncStatus::Started);
}

TEST_F(SimulatedStillTest, TwoStillsOfTheChartDifferInTheirCaptionAlone) {
    start(R"({"groups": [{"id": "G", "sources": [{"id": "S", "device": {"id": "D", "name": "Cam"},
        "formats": [{"width": 320, "height": 240}]}]}]})");
    const MediaCapture capture = open();
    const RgbImage first = still(capture);
    const RgbImage second = still(capture);
    const auto above = static_cast<std::ptrdiff_t>(Simulated::captionArea(320, 240).y) * 320 * 3;
    EXPECT_TRUE(std::equal(first.pixels.begin(), first.pixels.begin() + above, second.pixels.begin()));
    EXPECT_NE(first.pixels, second.pixels); // the frame's number
}

TEST_F(SimulatedStillTest, AStillOfACameraWithoutFormatsEndsWithAnError) {
    start(R"({"groups": [{"id": "G", "sources": [{"id": "S", "device": {"id": "D"}}]}]})");
    EXPECT_TRUE(outcomeOf([&] { still(open()); }).raised);
}

TEST_F(SimulatedStillTest, ASizeBeyondAllCamerasEndsWithAnError) {
    for (const std::string side : {"4294967295", "32767"}) {
        start(R"({"groups": [{"id": "G", "sources": [{"id": "S", "device": {"id": "D"},
            "formats": [{"width": )" +
              side + R"(, "height": )" + side + "}]}]}]}");
        EXPECT_TRUE(outcomeOf([&] { still(open()); }).raised) << side;
    }
}

TEST_F(SimulatedStillTest, TheCameraIsThatOfTheSourceWhoseFormatWasSet) {
    start(R"({"groups": [{"id": "G", "sources": [
        {"id": "A", "kind": "Infrared", "device": {"id": "DA"}, "formats": [{"width": 8, "height": 8}]},
        {"id": "B", "device": {"id": "DB"}, "formats": [{"width": 8, "height": 8}]},
        {"id": "C", "device": {"id": "DC"}, "formats": [{"width": 8, "height": 8}]}]}],
        "cameras": {"DB": {"brightness": {"supported": true}}, "DC": {"contrast": {"supported": true}}}})");
    const MediaCapture capture = open();
    EXPECT_TRUE(capture->VideoDeviceController()->Brightness()->Capabilities().Supported);
    const auto source = capture->FrameSources().Lookup(u"C");
    blockingWait(source->SetFormatAsync(source->SupportedFormats().GetAt(0)));
    EXPECT_FALSE(capture->VideoDeviceController()->Brightness()->Capabilities().Supported);
    EXPECT_TRUE(capture->VideoDeviceController()->Contrast()->Capabilities().Supported);
}

} // namespace
