#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/V4l2/Discovery/DeviceIdentity.h"
#include "Platform/V4l2/Kernel/DeviceErrors.h"
#include "Tests/Platform/V4l2/CameraFixture.h"

#include <linux/videodev2.h>

#include <cerrno>
#include <system_error>

namespace Platform::V4l2 {
namespace {

using std::chrono::milliseconds;

/// The road of one capture, as the hub goes it. Raises what the platform raises.
class FailuresTest : public CameraFixture {
protected:
    /// False where the still has not come in time.
    bool captureOnce(milliseconds limit = milliseconds(400)) {
        const auto groups = blockingWait(platform->FindAllAsync());
        if (groups.Size() == 0)
            return false;
        const auto capture = platform->CreateMediaCapture();
        blockingWait(capture->InitializeAsync({groups.GetAt(0)}));
        if (sourceOf(capture)->SupportedFormats().Size() < 2)
            return false; // the list of formats has ended early
        setFormat(capture, 1);
        const auto reader = startReader(capture);
        const auto exposure = capture->VideoDeviceController()->Exposure();
        exposure->TrySetAuto(true);
        exposure->TrySetAuto(false);
        exposure->TrySetValue(-4.0);
        double value = 0.0;
        exposure->TryGetValue(value);
        const bool came = still(capture, limit).has_value();
        blockingWait(reader->StopAsync());
        capture->Close();
        return came;
    }
};

TEST(DeviceErrorsTest, NameOperationDeviceReasonAndMeaning) {
    const auto text = [](int error, const char* operation = "VIDIOC_S_FMT") {
        return raisedBy([&] { throw deviceError(operation, "/dev/video3", error); });
    };
    EXPECT_EQ(text(EACCES, "open"), "80070005 open on /dev/video3: Permission denied (the user that runs the hub must "
                                    "be in the group \"video\")");
    EXPECT_EQ(text(EACCES), "80070005 VIDIOC_S_FMT on /dev/video3: Permission denied");
    EXPECT_EQ(text(EBUSY), "800700AA VIDIOC_S_FMT on /dev/video3: Device or resource busy (the camera is in use by "
                           "another program)");
    EXPECT_EQ(text(ESHUTDOWN), "80070002 VIDIOC_S_FMT on /dev/video3: Cannot send after transport endpoint shutdown "
                               "(the camera has been unplugged)");
    EXPECT_EQ(text(ENODEV), "80070002 VIDIOC_S_FMT on /dev/video3: No such device (the camera has been unplugged)");
    EXPECT_EQ(text(ENOSPC),
              "80004005 VIDIOC_S_FMT on /dev/video3: No space left on device (the USB bus has no bandwidth "
              "left for this format)");
    EXPECT_EQ(text(ETIMEDOUT),
              "800705B4 VIDIOC_S_FMT on /dev/video3: Connection timed out (the camera does not answer)");
    EXPECT_EQ(text(EINVAL), "80070057 VIDIOC_S_FMT on /dev/video3: Invalid argument");
    EXPECT_EQ(text(ENOMEM), "8007000E VIDIOC_S_FMT on /dev/video3: Cannot allocate memory");
    EXPECT_EQ(text(EIO), "80004005 VIDIOC_S_FMT on /dev/video3: Input/output error");
}

struct FailingCall {
    const char* name;
    unsigned long request;
    bool isReported; // a failure ends in an error that names the call
};

std::ostream& operator<<(std::ostream& stream, const FailingCall& call) { return stream << call.name; }

class FailingCallsTest : public FailuresTest, public testing::WithParamInterface<FailingCall> {};

/// Every error at every call: the capture succeeds in spite of it, or ends with an error that names it, or its still
/// does not come; and nothing is left open (see the fixture).
TEST_P(FailingCallsTest, EndInAnErrorThatNamesThemAndLeaveNothingBehind) {
    const FrameClock clock(*driver, videoPath);
    for (const int error : {EACCES, EAGAIN, EBUSY, EFAULT, EINVAL, EIO, EMFILE, ENODEV, ENOMEM, ENOSPC, ENOTTY, EPERM,
                            EPIPE, EPROTO, ERANGE, ESHUTDOWN, ETIMEDOUT}) {
        for (unsigned after = 0; after < 3; ++after) {
            plug(usbCamera());
            VideoNode node = usbNode(0);
            node.usb->session = std::to_string(error) + "." + std::to_string(after); // plugged in anew
            lister->replace(node);
            driver->failOn(GetParam().request, error, after);
            const std::string text = raisedBy([&] { captureOnce(milliseconds(60)); });
            driver->heal();
            EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); })) << error << ": " << text;
            if (text == "nothing raised")
                continue;
            const std::string reason = std::generic_category().message(error);
            const bool namesReason = text.find(" on /dev/video0: ") != std::string::npos &&
                                     (text.find(reason) != std::string::npos || meansUnplugged(error));
            EXPECT_TRUE(namesReason) << text;
            EXPECT_TRUE(meansUnplugged(error) || text.find(GetParam().name) != std::string::npos) << text;
        }
    }
    if (GetParam().isReported) {
        driver->failOn(GetParam().request, EFAULT);
        plug(usbCamera());
        VideoNode node = usbNode(0);
        node.usb->session = "last";
        lister->replace(node);
        EXPECT_NE(raisedBy([&] {
                      blockingWait(platform->FromIdAsync(Halden::toUtf16(deviceIdOf(node))));
                      captureOnce(milliseconds(60));
                  }).find(std::string(GetParam().name) + " on /dev/video0: Bad address"),
                  std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(
    EachCall, FailingCallsTest,
    testing::Values(
        FailingCall{"open", openCall, true}, FailingCall{"mmap", mapCall, true},
        FailingCall{"VIDIOC_QUERYCAP", VIDIOC_QUERYCAP, true}, FailingCall{"VIDIOC_ENUM_FMT", VIDIOC_ENUM_FMT, true},
        FailingCall{"VIDIOC_ENUM_FRAMESIZES", VIDIOC_ENUM_FRAMESIZES, true},
        FailingCall{"VIDIOC_ENUM_FRAMEINTERVALS", VIDIOC_ENUM_FRAMEINTERVALS, true},
        FailingCall{"VIDIOC_G_FMT", VIDIOC_G_FMT, true}, FailingCall{"VIDIOC_S_FMT", VIDIOC_S_FMT, true},
        FailingCall{"VIDIOC_S_PARM", VIDIOC_S_PARM, true}, FailingCall{"VIDIOC_REQBUFS", VIDIOC_REQBUFS, true},
        FailingCall{"VIDIOC_QUERYBUF", VIDIOC_QUERYBUF, true}, FailingCall{"VIDIOC_QBUF", VIDIOC_QBUF, true},
        FailingCall{"VIDIOC_DQBUF", VIDIOC_DQBUF, false}, FailingCall{"VIDIOC_STREAMON", VIDIOC_STREAMON, true},
        FailingCall{"VIDIOC_STREAMOFF", VIDIOC_STREAMOFF, false},
        FailingCall{"VIDIOC_QUERYCTRL", VIDIOC_QUERYCTRL, true},
        FailingCall{"VIDIOC_QUERYMENU", VIDIOC_QUERYMENU, true}, FailingCall{"VIDIOC_G_CTRL", VIDIOC_G_CTRL, true},
        FailingCall{"VIDIOC_S_CTRL", VIDIOC_S_CTRL, true}),
    [](const auto& item) { return item.param.name; });

TEST_F(FailuresTest, PullingTheCameraOutAtAnyCallEndsWellAndLeavesNothing) {
    const FrameClock clock(*driver, videoPath);
    ASSERT_TRUE(captureOnce(milliseconds(5000)));
    const unsigned calls = driver->allCalls();
    ASSERT_GT(calls, 50u);
    int reported = 0;
    for (unsigned call = 0; call < calls; ++call) {
        plug(usbCamera());
        VideoNode node = usbNode(0);
        node.usb->session = std::to_string(call);
        lister->replace(node);
        driver->unplugAtCall(videoPath, call);
        const std::string text = raisedBy([&] { captureOnce(milliseconds(30)); });
        if (text != "nothing raised") {
            EXPECT_EQ(text.substr(0, 9), "80070002 ") << text;
            EXPECT_NE(text.find("(the camera has been unplugged)"), std::string::npos) << text;
            ++reported;
        }
        EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); })) << "call " << call << ": " << text;
    }
    EXPECT_GT(reported, 20);
}

TEST_F(FailuresTest, ACameraThatIsGoneLetsGoAtOnceAndRaisesOnEveryUseButStopAndClose) {
    const auto capture = open();
    setFormat(capture, 1);
    const auto source = sourceOf(capture);
    const auto format = source->SupportedFormats().GetAt(0);
    const auto reader = startReader(capture);
    const auto control = capture->VideoDeviceController()->Exposure();
    const auto newer = capture->VideoDeviceController()->IsoSpeedControl();
    driver->unplug(videoPath);
    // Nobody calls anything: the stream alone finds it out.
    EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); }));
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    double value = 0;
    bool on = false;
    for (const auto& use : std::vector<std::function<void()>>{
             [&] { capture->FrameSources(); }, [&] { capture->VideoDeviceController(); },
             [&] { blockingWait(capture->CreateFrameReaderAsync(source)); }, [&] { capture->CameraStreamState(); },
             [&] { capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream); },
             [&] { source->Info(); }, [&] { source->SupportedFormats(); },
             [&] { blockingWait(source->SetFormatAsync(format)); }, [&] { blockingWait(reader->StartAsync()); },
             [&] { reader->AcquisitionMode(MediaFrameReaderAcquisitionMode::Realtime); },
             [&] { control->Capabilities(); }, [&] { control->TrySetValue(-4); }, [&] { control->TryGetValue(value); },
             [&] { control->TrySetAuto(true); }, [&] { control->TryGetAuto(on); }, [&] { newer->Supported(); },
             [&] { blockingWait(newer->SetValueAsync(100)); }}) {
        const std::string text = raisedBy(use);
        EXPECT_EQ(text.substr(0, 9), "80070002 ") << text;
        EXPECT_NE(text.find(" on /dev/video0: No such device (the camera has been unplugged)"), std::string::npos);
    }
    blockingWait(reader->StopAsync());
    capture->Close();
}

TEST_F(FailuresTest, AnIdleCameraThatIsGoneRaisesAtTheNextUse) {
    const auto capture = open();
    driver->unplug(videoPath);
    EXPECT_EQ(raisedBy([&] { capture->FrameSources(); }),
              "80070002 VIDIOC_QUERYCAP on /dev/video0: No such device (the camera has been unplugged)");
    EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); }));
}

TEST_F(FailuresTest, ACaptureThatWasClosedSinceTheCameraIsBusyNamesThat) {
    const auto capture = open();
    driver->failOn(VIDIOC_S_FMT, EBUSY);
    EXPECT_THROW(setFormat(capture, 0), winrt::hresult_error);
    capture->Close();
    EXPECT_EQ(raisedBy([&] { capture->FrameSources(); }),
              "80000013 MediaCapture.FrameSources on /dev/video0: the capture is closed: VIDIOC_S_FMT on /dev/video0: "
              "Device or resource busy (the camera is in use by another program)");
}

TEST_F(FailuresTest, AStillUnderWayNeverEndsOnACameraThatGoes) {
    const auto capture = open();
    const auto reader = startReader(capture);
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto action = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
    driver->unplug(videoPath);
    EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); }));
    blockingWait(reader->StopAsync());
    capture->Close();
    EXPECT_EQ(action.Status(), AsyncStatus::Started);
    EXPECT_EQ(stream->Size(), 0u);
}

TEST_F(FailuresTest, ACameraThatGoesBetweenTwoAttemptsAtAStreamIsLetGoAtOnce) {
    limits.restart = std::chrono::minutes(1);
    platform = createV4l2Platform(driver, lister, limits);
    const auto capture = open();
    const auto reader = startReader(capture);
    ASSERT_TRUE(driver->deliver(videoPath, {{}, V4L2_BUF_FLAG_ERROR, false, true, 0})); // as the endpoint goes first
    ASSERT_TRUE(waitUntil([this] { return !driver->isStreaming(videoPath); }));
    driver->unplug(videoPath);
    EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); }));
}

TEST_F(FailuresTest, ADriverThatComplainsBetweenTwoAttemptsAtAStreamIsHeardOnce) {
    FakeDevice device = usbCamera();
    device.complainsWithoutStream = true;
    plug(device);
    limits.restart = std::chrono::minutes(1);
    platform = createV4l2Platform(driver, lister, limits);
    const auto capture = open();
    const auto reader = startReader(capture);
    ASSERT_TRUE(driver->deliver(videoPath, {{}, V4L2_BUF_FLAG_ERROR, false, true, 0}));
    ASSERT_TRUE(waitUntil([this] { return !driver->isStreaming(videoPath); }));
    const unsigned polls = driver->calls(pollCall);
    std::this_thread::sleep_for(milliseconds(100)); // for it to complain
    EXPECT_LE(driver->calls(pollCall), polls + 2);
}

TEST_F(FailuresTest, AStillThatNeverEndsMayOwnTheCamera) {
    limits.answer = 2 * patience; // for the camera to be let go before the wait for it would end
    platform = createV4l2Platform(driver, lister, limits);
    auto capture = open();
    auto reader = startReader(capture);
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream)
        .Completed([capture, reader](const IAsyncAction&, AsyncStatus) {});
    capture = nullptr;
    reader = nullptr;
    driver->unplug(videoPath);
    EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); }));
}

TEST_F(FailuresTest, AStillUnderWayFailsWhenTheCaptureIsClosed) {
    const auto capture = open();
    const auto reader = startReader(capture);
    const auto stream = std::make_shared<InMemoryRandomAccessStream>();
    const auto action = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(), stream);
    capture->Close();
    EXPECT_EQ(raisedBy([&] { blockingWait(action); }), "80000013 still on /dev/video0: the capture is closed");
}

TEST_F(FailuresTest, ACameraThatComesBackUnderAnotherNumberHasItsId) {
    const auto id = group()->Id();
    const auto capture = open();
    const auto reader = startReader(capture);
    driver->unplug(videoPath);
    lister->remove(usbNode(0).systemPath);
    VideoNode back = usbNode(0);
    back.devicePath = "/dev/video7";
    back.systemPath += "7";
    driver->plug("/dev/video7", usbCamera());
    lister->add(back);
    EXPECT_EQ(group()->Id(), id);
    const auto again = open();
    setFormat(again, 1);
    const FrameClock clock(*driver, "/dev/video7");
    const auto secondReader = startReader(again);
    EXPECT_TRUE(still(again));
}

TEST_F(FailuresTest, ADriverThatNeverAnswersCostsALimitedTime) {
    const auto capture = open();
    const auto reader = startReader(capture);
    const auto exposure = capture->VideoDeviceController()->Exposure();
    driver->blockOn(VIDIOC_S_CTRL);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(
        raisedBy([&] { exposure->TrySetValue(-4.0); }),
        "800705B4 MediaDeviceControl.TrySetValue on /dev/video0: Connection timed out (the camera does not answer)");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, limits.answer);
    // From now on nobody waits again.
    EXPECT_EQ(raisedBy([&] { capture->FrameSources(); }).substr(0, 9), "800705B4 ");
    blockingWait(reader->StopAsync());
    capture->Close();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 3 * limits.answer);
    EXPECT_EQ(driver->openDescriptors(), 1u);
    driver->release();
    EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); }));
}

TEST_F(FailuresTest, ADriverThatAnswersLateIsUsedAgain) {
    const auto capture = open();
    const auto exposure = capture->VideoDeviceController()->Exposure();
    driver->blockOn(VIDIOC_S_CTRL);
    EXPECT_EQ(raisedBy([&] { exposure->TrySetValue(-4.0); }).substr(0, 9), "800705B4 ");
    driver->release();
    EXPECT_TRUE(waitUntil([&] { return raisedBy([&] { capture->FrameSources(); }) == "nothing raised"; }));
    EXPECT_TRUE(exposure->TrySetValue(-5.0));
}

TEST_F(FailuresTest, AnOpeningThatNeverEndsCostsALimitedTime) {
    const auto known = group();
    driver->blockOn(VIDIOC_QUERYCAP);
    EXPECT_EQ(raisedBy([&] { blockingWait(platform->CreateMediaCapture()->InitializeAsync({known})); }),
              "800705B4 open on /dev/video0: Connection timed out (the camera does not answer)");
}

TEST_F(FailuresTest, ManyOpeningsAndClosingsAtOnceLeaveNothing) {
    const FrameClock clock(*driver, videoPath);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([this] {
            for (int k = 0; k < 10; ++k)
                raisedBy([this] { captureOnce(milliseconds(50)); }); // most find it busy
        });
    for (int i = 0; i < 20; ++i) {
        driver->unplug(videoPath);
        std::this_thread::sleep_for(milliseconds(5));
        driver->plug(videoPath, usbCamera());
        std::this_thread::sleep_for(milliseconds(10));
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(waitUntil([this] { return nothingIsLeft(); }));
}

} // namespace
} // namespace Platform::V4l2
