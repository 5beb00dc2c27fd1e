#include "Platform/V4l2/Streaming/Freshness.h"

#include "Platform/Interface/VideoDeviceController.h"
#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Platform/V4l2/CameraFixture.h"

#include <linux/videodev2.h>
#include <turbojpeg.h>

#include <functional>
#include <random>

namespace Platform::V4l2 {
namespace {

using std::chrono::milliseconds;

FrameTime startedAt(TimePoint moment) { return {moment, false, moment}; }

TEST(FramesSinceTest, CountsOnlyFramesThatBeganAfterTheMoment) {
    const TimePoint moment = TimePoint{} + milliseconds(1000);
    FramesSince frames(moment);
    frames.count(startedAt(moment - milliseconds(1)));
    frames.count(startedAt(moment));
    EXPECT_FALSE(frames.isBeyond(0));
    frames.count(startedAt(moment + milliseconds(1)));
    EXPECT_TRUE(frames.isBeyond(0));
    EXPECT_FALSE(frames.isBeyond(1));
}

TEST(FramesSinceTest, AFrameThatOnlyItsEndIsKnownOfMayHaveBegunBefore) {
    const TimePoint moment = TimePoint{} + milliseconds(1000);
    FramesSince frames(moment);
    frames.count({moment + milliseconds(1), true, moment + milliseconds(2)});
    EXPECT_FALSE(frames.isBeyond(0));
    frames.count({moment + milliseconds(30), true, moment + milliseconds(31)});
    EXPECT_TRUE(frames.isBeyond(0));
}

TEST(FramesSinceTest, AFrameWithoutAStampCountsByItsArrival) {
    const TimePoint moment = TimePoint{} + milliseconds(1000);
    FramesSince frames(moment);
    frames.count({std::nullopt, false, moment});
    frames.count({std::nullopt, false, moment + milliseconds(1)});
    EXPECT_FALSE(frames.isBeyond(0));
    frames.count({std::nullopt, false, moment + milliseconds(30)});
    EXPECT_TRUE(frames.isBeyond(0));
}

TEST(FrameRhythmTest, IsTheLongestTimeBetweenFramesThatFollowEachOther) {
    FrameRhythm rhythm;
    const auto count = [&](std::uint32_t number, int ms) {
        rhythm.count({TimePoint{} + milliseconds(ms), false, {}, number});
        return rhythm.longestInterval();
    };
    EXPECT_EQ(count(7, 1000), std::nullopt);
    EXPECT_EQ(count(8, 1030), milliseconds(30));
    EXPECT_EQ(count(9, 1080), milliseconds(50));
    EXPECT_EQ(count(10, 1110), milliseconds(50));
    EXPECT_EQ(count(500, 9000), milliseconds(50)); // those between were lost, as all buffers were full
    EXPECT_EQ(count(501, 9060), milliseconds(60));
}

TEST(FrameRhythmTest, IsNotKnownFromFramesWithoutAStamp) {
    FrameRhythm rhythm;
    rhythm.count({std::nullopt, false, TimePoint{} + milliseconds(1), 0});
    rhythm.count({std::nullopt, false, TimePoint{} + milliseconds(2), 1});
    rhythm.count({TimePoint{} + milliseconds(2), false, {}, 2});
    EXPECT_EQ(rhythm.longestInterval(), std::nullopt);
}

TEST(FreshnessRuleTest, AUsbCameraHoldsMoreFramesThanASensorOnBoard) {
    const FreshnessRule usb = freshnessRuleFor("usb-0000:00:14.0-1");
    EXPECT_EQ(usb.afterRequest, 3u);
    EXPECT_EQ(usb.afterSetting, 6u);
    const FreshnessRule board = freshnessRuleFor("platform:isp0");
    EXPECT_EQ(board.afterRequest, 2u);
    EXPECT_EQ(board.afterSetting, 4u);
}

struct ClassOfDevice {
    const char* name;
    const char* bus;
    unsigned settingDelay; // the most that the rule for the class allows for
    std::uint32_t timestampFlags;
    bool timed;
};

std::ostream& operator<<(std::ostream& stream, const ClassOfDevice& item) { return stream << item.name; }

class FreshnessTest : public CameraFixture, public testing::WithParamInterface<ClassOfDevice> {};

/// The promise of the product: no still shows an exposure other than the one that was set before it.
TEST_P(FreshnessTest, TheFirstStillAfterASettingShowsIt) {
    FakeDevice device = usbCamera();
    device.bus = GetParam().bus;
    device.settingDelay = GetParam().settingDelay;
    device.timestampFlags = GetParam().timestampFlags;
    plug(device);
    const auto capture = open();
    setFormat(capture, 1);
    const auto reader = startReader(capture);
    FakeFrame frame;
    frame.timed = GetParam().timed;
    const FrameClock clock(*driver, videoPath, frame);
    const auto exposure = capture->VideoDeviceController()->Exposure();
    const auto range = exposure->Capabilities();
    std::mt19937 random(5);
    std::uniform_int_distribution<int> stops(static_cast<int>(range.Min), static_cast<int>(range.Max));
    int fresh = 0;
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(exposure->TrySetValue(stops(random)));
        const std::uint8_t luma = lumaOfExposure(driver->control(videoPath, V4L2_CID_EXPOSURE_ABSOLUTE));
        const auto png = still(capture);
        ASSERT_TRUE(png);
        fresh += std::abs(brightness(*png) - (luma - 16) * 255 / 219) <= 2 ? 1 : 0;
    }
    EXPECT_EQ(fresh, 100);
}

INSTANTIATE_TEST_SUITE_P(
    EachClass, FreshnessTest,
    testing::Values(ClassOfDevice{"Usb", "usb-0000:00:14.0-1", 6,
                                  V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC | V4L2_BUF_FLAG_TSTAMP_SRC_SOE, true},
                    ClassOfDevice{"SensorOnBoard", "platform:isp0", 4,
                                  V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC | V4L2_BUF_FLAG_TSTAMP_SRC_EOF, true},
                    ClassOfDevice{"WithoutClock", "usb-0000:00:14.0-1", 6, V4L2_BUF_FLAG_TIMESTAMP_UNKNOWN, true},
                    ClassOfDevice{"WithoutTimes", "usb-0000:00:14.0-1", 6,
                                  V4L2_BUF_FLAG_TIMESTAMP_MONOTONIC | V4L2_BUF_FLAG_TSTAMP_SRC_SOE, false}),
    [](const auto& item) { return item.param.name; });

class FreshnessOfStillsTest : public CameraFixture {};

TEST_F(FreshnessOfStillsTest, FramesThatWereFullBeforeTheRequestAreNotTaken) {
    const auto capture = open();
    setFormat(capture, 1);
    const auto reader = startReader(capture);
    for (int i = 0; i < 50; ++i)
        driver->deliver(videoPath);
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto action = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
    EXPECT_FALSE(CompletionFlag::of(action)->waitUntil(std::chrono::steady_clock::now() + milliseconds(50)));
}

TEST_F(FreshnessOfStillsTest, NobodyReadsFramesWhileNobodyWaitsForOne) {
    const auto capture = open();
    setFormat(capture, 1);
    const auto reader = startReader(capture);
    const FrameClock clock(*driver, videoPath);
    ASSERT_TRUE(still(capture));
    ASSERT_TRUE(waitUntil([this] { return driver->emptyBuffers(videoPath) == 0; }));
    const unsigned read = driver->calls(VIDIOC_DQBUF);
    std::this_thread::sleep_for(milliseconds(100)); // for the clock to offer more
    EXPECT_EQ(driver->calls(VIDIOC_DQBUF), read);
    EXPECT_TRUE(still(capture));
}

TEST_F(FreshnessOfStillsTest, AStillNeedsNoMoreFramesThanTheRule) {
    const auto capture = open();
    setFormat(capture, 1);
    const auto reader = startReader(capture);
    const FreshnessRule rule = freshnessRuleFor("usb-");
    for (unsigned i = 0; i <= rule.afterSetting; ++i) // the start of the stream counts as a setting
        ASSERT_TRUE(deliverTaken());
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto action = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
    for (unsigned i = 0; i < rule.afterRequest; ++i)
        ASSERT_TRUE(deliverTaken());
    EXPECT_EQ(action.Status(), AsyncStatus::Started);
    ASSERT_TRUE(deliverTaken());
    blockingWait(action);
    EXPECT_GT(stream->Size(), 0u);
}

TEST_F(FreshnessOfStillsTest, AfterADamagedFrameTheVeryNextOneIsTried) {
    const auto capture = open();
    setFormat(capture, 0); // JPEG
    const auto reader = startReader(capture);
    const FreshnessRule rule = freshnessRuleFor("usb-");
    const auto deliver = [this](const std::vector<std::uint8_t>& bytes) {
        return deliverTaken({bytes, 0, true, false, 0});
    };
    const auto whole = Imaging::writeJpeg(Imaging::smoothPicture(32, 16), TJSAMP_444);
    const std::vector<std::uint8_t> half(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2));
    for (unsigned i = 0; i <= rule.afterSetting; ++i) // the start of the stream counts as a setting
        ASSERT_TRUE(deliver(whole));
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto action = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
    for (unsigned i = 0; i < rule.afterRequest; ++i)
        ASSERT_TRUE(deliver(whole));
    ASSERT_TRUE(deliver(half));
    std::this_thread::sleep_for(milliseconds(20)); // for the decoder to refuse it
    EXPECT_EQ(action.Status(), AsyncStatus::Started);
    ASSERT_TRUE(deliver(whole));
    blockingWait(action);
    EXPECT_GT(stream->Size(), 0u);
}

TEST_F(FreshnessOfStillsTest, ARefusedSettingCountsAsWell) {
    const auto capture = open();
    setFormat(capture, 1);
    const auto reader = startReader(capture);
    const auto exposure = capture->VideoDeviceController()->Exposure();
    ASSERT_TRUE(exposure->TrySetAuto(false));
    driver->failOn(VIDIOC_S_CTRL, EIO, 0, 1);
    EXPECT_FALSE(exposure->TrySetValue(-5));
    for (int i = 0; i < 3; ++i) {
        std::this_thread::sleep_for(milliseconds(2));
        driver->deliver(videoPath);
    }
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto action = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
    for (int i = 0; i < 3; ++i) {
        std::this_thread::sleep_for(milliseconds(2));
        driver->deliver(videoPath);
    }
    EXPECT_EQ(action.Status(), AsyncStatus::Started);
    const FrameClock clock(*driver, videoPath);
    blockingWait(action);
}

/// A camera that delivers frames, and how long a still of it takes after some settings.
class TimeForTheLensTest : public FreshnessOfStillsTest {
protected:
    void SetUp() override { setFormat(capture, 1); }

    void expectHalfASecond(const std::function<void(IVideoDeviceController&)>& change) {
        const auto begin = std::chrono::steady_clock::now();
        change(*capture->VideoDeviceController());
        ASSERT_TRUE(still(capture));
        EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(500));
    }

    const MediaCapture capture = open();
    const FrameClock clock{*driver, videoPath};
};

TEST_F(TimeForTheLensTest, IsGivenAfterAChangeOfFocus) {
    const auto reader = startReader(capture);
    expectHalfASecond([](auto& controller) { ASSERT_TRUE(controller.Focus()->TrySetValue(100)); });
}

TEST_F(TimeForTheLensTest, IsGivenAlsoWhereAnotherSettingFollows) {
    const auto reader = startReader(capture);
    expectHalfASecond([](auto& controller) {
        ASSERT_TRUE(controller.Focus()->TrySetValue(100));
        ASSERT_TRUE(controller.Exposure()->TrySetValue(-5));
    });
}

TEST_F(TimeForTheLensTest, IsGivenAlsoWhereTheStreamStartsMeanwhile) {
    for (const bool reads : {false, true}) {
        const auto reader = reads ? startReader(capture) : nullptr;
        expectHalfASecond([&](auto& controller) {
            ASSERT_TRUE(controller.Focus()->TrySetValue(reads ? 100 : 200));
            setFormat(capture, 1);
        });
    }
}

} // namespace
} // namespace Platform::V4l2
