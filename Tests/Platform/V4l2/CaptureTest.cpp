#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/V4l2/Streaming/Freshness.h"
#include "Tests/Platform/Imaging/EncodedPictures.h"
#include "Tests/Platform/V4l2/CameraFixture.h"

#include <linux/videodev2.h>
#include <turbojpeg.h>

#include <cerrno>

namespace Platform::V4l2 {
namespace {

class CaptureTest : public CameraFixture {};

// The list of usbCamera: preferred formats last.
constexpr std::uint32_t mjpeg = 0;
constexpr std::uint32_t smallAt30 = 1;
constexpr std::uint32_t largeFormat = 3;

TEST_F(CaptureTest, ProfileAndSupportedFormatsAreTheSameList) {
    const auto info = group()->SourceInfos().GetAt(0);
    const auto profile = info->asMediaFrameSourceInfo2()->VideoProfileMediaDescription();
    const auto capture = open();
    const auto formats = sourceOf(capture)->SupportedFormats();
    ASSERT_EQ(profile.Size(), 4u);
    ASSERT_EQ(formats.Size(), 4u);
    for (std::uint32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(formats.GetAt(i).Index, i);
        EXPECT_EQ(formats.GetAt(i).Width, profile.GetAt(i).Width);
        EXPECT_EQ(formats.GetAt(i).Height, profile.GetAt(i).Height);
        EXPECT_EQ(formats.GetAt(i).FrameRate, profile.GetAt(i).FrameRate);
        EXPECT_EQ(formats.GetAt(i).Subtype, profile.GetAt(i).Subtype);
    }
    EXPECT_EQ(profile.GetAt(mjpeg).Subtype, u"MJPG");
    EXPECT_EQ(profile.GetAt(smallAt30).Subtype, u"YUYV");
    EXPECT_EQ(profile.GetAt(smallAt30).FrameRate, 30.0);
    EXPECT_EQ(profile.GetAt(largeFormat).Width, 32u);
    EXPECT_EQ(profile.GetAt(largeFormat).FrameRate, 10.0);
}

TEST_F(CaptureTest, StillsHaveTheSizeOfTheFormatThatWasSet) {
    const auto capture = open();
    setFormat(capture, largeFormat);
    EXPECT_EQ(driver->interval(videoPath).denominator, 10u);
    const auto reader = startReader(capture);
    const FrameClock clock(*driver, videoPath);
    const auto png = still(capture);
    ASSERT_TRUE(png);
    const auto size = Imaging::decodeImageSize(*png);
    EXPECT_EQ(size.width, 32u);
    EXPECT_EQ(size.height, 16u);
    setFormat(capture, smallAt30); // while the stream runs
    EXPECT_EQ(Imaging::decodeImageSize(still(capture).value()).width, 16u);
}

TEST_F(CaptureTest, AStillWithoutAReaderRunsTheStreamForItselfAlone) {
    const auto capture = open();
    setFormat(capture, smallAt30);
    const FrameClock clock(*driver, videoPath);
    ASSERT_TRUE(still(capture));
    // The buffers are unmapped behind the end of the stream.
    EXPECT_TRUE(waitUntil([this] { return !driver->isStreaming(videoPath) && driver->mappings() == 0; }));
}

TEST_F(CaptureTest, TheStreamStateFollowsTheReader) {
    const auto capture = open();
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
    const auto reader = startReader(capture);
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::Streaming);
    reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Realtime);
    blockingWait(reader->StartAsync()); // again: no effect
    blockingWait(reader->StopAsync());
    EXPECT_EQ(capture->CameraStreamState(), CameraStreamState::NotStreaming);
    EXPECT_FALSE(driver->isStreaming(videoPath));
    EXPECT_EQ(driver->buffers(videoPath), 0u);
    blockingWait(reader->StopAsync());
}

TEST_F(CaptureTest, ReleasingTheReaderStopsTheStream) {
    const auto capture = open();
    startReader(capture);
    EXPECT_TRUE(waitUntil([this] { return !driver->isStreaming(videoPath); }));
}

TEST_F(CaptureTest, ANewCaptureRaisesOnEveryUse) {
    const auto capture = platform->CreateMediaCapture();
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto text = [](const std::string& operation) {
        return "8000000E " + operation + " on a camera: the capture has not been initialised";
    };
    EXPECT_EQ(raisedBy([&] { capture->FrameSources(); }), text("MediaCapture.FrameSources"));
    EXPECT_EQ(raisedBy([&] { capture->VideoDeviceController(); }), text("MediaCapture.VideoDeviceController"));
    EXPECT_EQ(raisedBy([&] { capture->CreateFrameReaderAsync(nullptr); }), text("MediaCapture.CreateFrameReaderAsync"));
    EXPECT_EQ(raisedBy([&] { capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream); }),
              text("MediaCapture.CapturePhotoToStreamAsync"));
    EXPECT_EQ(raisedBy([&] { capture->CameraStreamState(); }), text("MediaCapture.CameraStreamState"));
    capture->Close();
}

TEST_F(CaptureTest, AClosedCaptureRaisesOnEveryUseButClose) {
    const auto capture = open();
    const auto source = sourceOf(capture);
    const auto format = source->SupportedFormats().GetAt(0);
    const auto reader = startReader(capture);
    const auto control = capture->VideoDeviceController()->Exposure();
    const auto newer = capture->VideoDeviceController()->ExposureControl();
    capture->Close();
    EXPECT_TRUE(nothingIsLeft());
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    double value = 0;
    bool on = false;
    for (const auto& use : std::vector<std::function<void()>>{
             [&] { capture->FrameSources(); }, [&] { capture->VideoDeviceController(); },
             [&] { capture->CreateFrameReaderAsync(source); }, [&] { capture->CameraStreamState(); },
             [&] { capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream); },
             [&] { blockingWait(capture->InitializeAsync({group()})); }, [&] { source->Info(); },
             [&] { source->SupportedFormats(); }, [&] { source->SetFormatAsync(format); },
             [&] { reader->StartAsync(); }, [&] { reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Realtime); },
             [&] { control->Capabilities(); }, [&] { control->TrySetValue(-4); }, [&] { control->TryGetValue(value); },
             [&] { control->TrySetAuto(true); }, [&] { control->TryGetAuto(on); }, [&] { newer->Supported(); }})
        EXPECT_EQ(raisedBy(use).substr(0, 9), "80000013 ");
    blockingWait(reader->StopAsync());
    capture->Close();
}

TEST_F(CaptureTest, InitializeFailsTheSecondTimeAndForNoGroup) {
    const auto capture = open();
    EXPECT_EQ(raisedBy([&] { blockingWait(capture->InitializeAsync({group()})); }),
              "8000000E MediaCapture.InitializeAsync on /dev/video0: the capture has been initialised already");
    EXPECT_EQ(raisedBy([&] { blockingWait(platform->CreateMediaCapture()->InitializeAsync({})); }),
              "80070057 MediaCapture.InitializeAsync on a camera: the source group is none of this platform");
}

TEST_F(CaptureTest, AReaderOfNoSourceFails) {
    const auto capture = open();
    EXPECT_EQ(raisedBy([&] { blockingWait(capture->CreateFrameReaderAsync(nullptr)); }),
              "80070057 MediaCapture.CreateFrameReaderAsync on a camera: the source is none of this capture");
}

TEST_F(CaptureTest, StillsAreOnlyWrittenAsPngIntoAStream) {
    const auto capture = open();
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    EXPECT_EQ(raisedBy([&] { capture->CapturePhotoToStreamAsync({u"JPEG"}, stream); }).substr(0, 9), "80070057 ");
    EXPECT_EQ(raisedBy([&] {
                  capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), nullptr);
              }).substr(0, 9),
              "80070057 ");
}

TEST_F(CaptureTest, AFormatThatIsNotThereIsRefused) {
    const auto capture = open();
    EXPECT_EQ(raisedBy([&] { blockingWait(sourceOf(capture)->SetFormatAsync({77, 1, 1, 1.0, u""})); }),
              "80070057 VIDIOC_S_FMT on /dev/video0: the camera has no format 77");
}

TEST_F(CaptureTest, AFormatThatTheDriverReplacesIsAnError) {
    FakeDevice device = usbCamera();
    device.substitutedFormat[V4L2_PIX_FMT_MJPEG] = V4L2_PIX_FMT_YUYV;
    plug(device);
    const auto capture = open();
    EXPECT_EQ(raisedBy([&] { setFormat(capture, mjpeg); }),
              "80004005 VIDIOC_S_FMT on /dev/video0: the camera has set YUYV 32x16 instead of MJPG 32x16");
}

TEST_F(CaptureTest, ACameraInUseByAnotherProgramSaysSo) {
    const int other = driver->open(videoPath, 0);
    v4l2_requestbuffers request{};
    request.count = 1;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    ASSERT_EQ(driver->ioctl(other, VIDIOC_REQBUFS, &request), 0);
    const auto capture = open();
    EXPECT_EQ(
        raisedBy([&] { setFormat(capture, 0); }),
        "800700AA VIDIOC_S_FMT on /dev/video0: Device or resource busy (the camera is in use by another program)");
    EXPECT_EQ(
        raisedBy([&] { startReader(capture); }),
        "800700AA VIDIOC_REQBUFS on /dev/video0: Device or resource busy (the camera is in use by another program)");
    driver->close(other);
    startReader(capture);
}

TEST_F(CaptureTest, AnotherCameraUnderTheSameNumberIsNotOpened) {
    const auto known = group();
    FakeDevice other = usbCamera();
    other.card = "Another Camera";
    plug(other);
    EXPECT_EQ(raisedBy([&] { blockingWait(platform->CreateMediaCapture()->InitializeAsync({known})); }),
              "80070002 open on /dev/video0: No such device (the camera has been unplugged)");
}

TEST_F(CaptureTest, ACameraWhoseNamesFillTheirFieldsIsOpened) {
    FakeDevice device = usbCamera();
    device.card = std::string(sizeof v4l2_capability{}.card, 'c');
    device.bus = "usb-" + std::string(sizeof v4l2_capability{}.bus_info - 4, 'b');
    plug(device);
    EXPECT_EQ(raisedBy([this] { open(); }), "nothing raised");
}

TEST_F(CaptureTest, DamagedShortAndMarkedFramesAreSkipped) {
    const auto capture = open();
    setFormat(capture, smallAt30);
    const auto reader = startReader(capture);
    const FakeFrame marked{{}, V4L2_BUF_FLAG_ERROR, true, false, 0};
    const FakeFrame shortened{std::vector<std::uint8_t>(16 * 8 * 2 - 1, 128), 0, true, false, 0};
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto action = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
    for (int i = 0; i < 20; ++i)
        for (const FakeFrame& frame : {marked, shortened}) {
            driver->deliver(videoPath, frame);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    EXPECT_EQ(action.Status(), AsyncStatus::Started);
    const FrameClock clock(*driver, videoPath);
    blockingWait(action);
    EXPECT_GT(stream->Size(), 0u);
}

TEST_F(CaptureTest, AJpegThatDoesNotDecodeIsFollowedByTheNextFrame) {
    const auto capture = open();
    setFormat(capture, mjpeg);
    const auto reader = startReader(capture);
    const std::vector<std::uint8_t> damaged(100, 0xFF);
    const auto whole = Imaging::writeJpeg(Imaging::smoothPicture(32, 16), TJSAMP_444);
    const auto deliver = [this](const std::vector<std::uint8_t>& bytes) {
        return deliverTaken({bytes, 0, true, false, 0});
    };
    const FreshnessRule rule = freshnessRuleFor("usb-");
    for (unsigned i = 0; i <= rule.afterSetting; ++i) // the start of the stream counts as a setting
        ASSERT_TRUE(deliver(whole));
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto action = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
    for (unsigned i = 0; i < rule.afterRequest; ++i)
        ASSERT_TRUE(deliver(whole));
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(deliver(damaged));
        std::this_thread::sleep_for(std::chrono::milliseconds(20)); // for the decoder to refuse it
        EXPECT_EQ(action.Status(), AsyncStatus::Started);
    }
    ASSERT_TRUE(deliver(whole));
    EXPECT_TRUE(CompletionFlag::of(action)->waitUntil(std::chrono::steady_clock::now() + patience));
    EXPECT_GT(stream->Size(), 0u);
}

TEST_F(CaptureTest, AStillFailsInTheEndOnACameraThatDeliversNothing) {
    const auto capture = open();
    const auto reader = startReader(capture);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(raisedBy([&] { still(capture); }),
              "800705B4 still on /dev/video0: the camera has not delivered a picture that is fit");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, limits.still);
}

TEST_F(CaptureTest, TwoStillsAtOnceComeBoth) {
    const auto capture = open();
    setFormat(capture, smallAt30);
    const auto reader = startReader(capture);
    const FrameClock clock(*driver, videoPath);
    std::optional<std::vector<std::uint8_t>> other;
    std::thread second([&] { other = still(capture); });
    EXPECT_TRUE(still(capture));
    second.join();
    EXPECT_TRUE(other);
}

TEST_F(CaptureTest, CallsThatASignalInterruptsAreRepeated) {
    driver->failOn(openCall, EINTR, 0, 2);
    for (const unsigned long request : {VIDIOC_QUERYCAP, VIDIOC_S_FMT, VIDIOC_REQBUFS, VIDIOC_STREAMON, VIDIOC_DQBUF})
        driver->failOn(request, EINTR, 0, 2);
    const auto capture = open();
    setFormat(capture, smallAt30);
    const auto reader = startReader(capture);
    const FrameClock clock(*driver, videoPath);
    EXPECT_TRUE(still(capture));
}

TEST_F(CaptureTest, BothPlanarInterfacesGiveTheSamePicture) {
    for (const std::uint32_t code : {V4L2_PIX_FMT_NV12, V4L2_PIX_FMT_NV12M}) {
        FakeDevice device = usbCamera();
        device.capabilities = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
        device.formats = {{code, {{16, 8, {{1, 30}}}}}};
        device.card = "Planar " + std::to_string(code);
        plug(device);
        VideoNode node = usbNode(0);
        node.usb->session = device.card; // plugged in anew
        lister->replace(node);
        const auto capture = open();
        setFormat(capture, 0);
        const auto reader = startReader(capture);
        const FrameClock clock(*driver, videoPath);
        const auto png = still(capture);
        ASSERT_TRUE(png);
        EXPECT_NEAR(brightness(*png), (lumaOfExposure(250) - 16) * 255.0 / 219, 2);
    }
}

TEST_F(CaptureTest, WhatABrokenDriverTellsOfItsBuffersIsNotBelieved) {
    limits.still = std::chrono::milliseconds(300);
    platform = createV4l2Platform(driver, lister, limits);
    const std::string unfit = "800705B4 still on /dev/video0: the camera has not delivered a picture that is fit";
    for (const auto& [nonsense, expected] : std::vector<std::pair<FakeNonsense, std::string>>{
             {{1000, 0, 0}, unfit}, {{0, 20, 0}, "nothing raised"}, {{0, 0, 0xFFFF'FFFF}, unfit}}) {
        FakeDevice device = usbCamera();
        device.capabilities = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
        device.formats = {{V4L2_PIX_FMT_NV12M, {{64, 48, {{1, 30}}}}}};
        device.nonsense = nonsense;
        plug(device);
        VideoNode node = usbNode(0);
        node.usb->session = std::to_string(nonsense.index) + "." + std::to_string(nonsense.planes); // plugged in anew
        lister->replace(node);
        const auto capture = open();
        setFormat(capture, 0);
        const auto reader = startReader(capture);
        const FrameClock clock(*driver, videoPath);
        EXPECT_EQ(raisedBy([&] { still(capture); }), expected);
    }
}

TEST_F(CaptureTest, TheOtherSourcesOfAGroupHaveStreamsOfTheirOwn) {
    FakeDevice infrared = usbCamera();
    infrared.formats = {{V4L2_PIX_FMT_GREY, {{16, 8, {{1, 30}}}}}};
    VideoNode node = usbNode(0);
    node.systemPath += ".1";
    node.devicePath = "/dev/video1";
    node.usb->interfaceNumber = "02";
    driver->plug("/dev/video1", infrared);
    lister->add(node);
    const auto capture = open();
    EXPECT_EQ(driver->openDescriptors(), 1u);
    const auto sources = capture->FrameSources();
    ASSERT_EQ(sources.Size(), 2u);
    const auto second = (sources.begin() + 1)->second;
    EXPECT_EQ(second->Info()->SourceKind(), MediaFrameSourceKind::Infrared);
    blockingWait(second->SetFormatAsync(second->SupportedFormats().GetAt(0)));
    const auto reader = blockingWait(capture->CreateFrameReaderAsync(second));
    blockingWait(reader->StartAsync());
    EXPECT_TRUE(driver->isStreaming("/dev/video1"));
    EXPECT_FALSE(driver->isStreaming(videoPath));
    capture->Close();
    EXPECT_TRUE(nothingIsLeft());
}

} // namespace
} // namespace Platform::V4l2
