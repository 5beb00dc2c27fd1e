#include "Tests/Platform/V4l2/CameraFixture.h"
#include "Tests/Support/FailingLargeAllocations.h"
#include "Tests/Support/StreamWithoutRoom.h"

#include <linux/videodev2.h>

namespace Platform::V4l2 {
namespace {

constexpr std::size_t frameSize = 64 * 480 * 2; // YUYV
constexpr std::size_t imageSize = 64 * 480 * 3;
constexpr const char* noMemory = "8007000E still on /dev/video0: Cannot allocate memory";

class WithoutMemoryTest : public CameraFixture {
protected:
    WithoutMemoryTest() {
        driver->unplug(videoPath);
        FakeDevice device = usbCamera();
        device.formats = {{V4L2_PIX_FMT_YUYV, {{64, 480, {{1, 30}}}}}};
        plug(device);
        capture = open();
        reader = startReader(capture);
    }

    /// What a still comes to where so many bytes are too many, and then one with memory.
    void expectStillToFail(std::size_t size) {
        {
            const FailingLargeAllocations failing(size);
            const auto asked = capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(),
                                                                  std::make_shared<InMemoryRandomAccessStream>());
            ASSERT_TRUE(waitUntil([&] {
                driver->deliver(videoPath);
                return asked.Status() != AsyncStatus::Started;
            }));
            EXPECT_EQ(raisedBy([&] { asked.GetResults(); }), noMemory);
        }
        EXPECT_EQ(driver->calls(VIDIOC_STREAMON), 1u);
        const FrameClock clock(*driver, videoPath);
        EXPECT_TRUE(still(capture).has_value());
    }

    MediaCapture capture;
    MediaFrameReader reader;
};

TEST_F(WithoutMemoryTest, AStillWithoutRoomForItsFrameFails) { expectStillToFail(frameSize); }

TEST_F(WithoutMemoryTest, AStillWithoutRoomForItsPixelsFails) { expectStillToFail(imageSize); }

TEST_F(WithoutMemoryTest, AStillThatCannotBeWrittenFails) {
    const FrameClock clock(*driver, videoPath);
    EXPECT_EQ(raisedBy([&] {
                  blockingWait(capture->CapturePhotoToStreamAsync(ImageEncodingProperties::CreatePng(),
                                                                  std::make_shared<StreamWithoutRoom>()));
              }),
              noMemory);
    EXPECT_TRUE(still(capture).has_value());
}

} // namespace
} // namespace Platform::V4l2
