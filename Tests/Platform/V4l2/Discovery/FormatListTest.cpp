#include "Platform/V4l2/Discovery/FormatList.h"

#include "Platform/V4l2/Discovery/NodeDescription.h"
#include "Tests/Platform/V4l2/CameraFixture.h"

#include <functional>

namespace Platform::V4l2 {
namespace {

constexpr const char* videoPath = "/dev/video0";

/// A driver of which a test answers single requests itself.
class AnsweringDriver final : public SystemCalls {
public:
    using Answer = std::function<int(void*)>; // 0 or the error number

    AnsweringDriver() { driver.plug(videoPath, usbCamera()); }

    int open(const char* path, int flags) override { return driver.open(path, flags); }
    int close(int descriptor) override { return driver.close(descriptor); }
    int ioctl(int descriptor, unsigned long request, void* argument) override {
        const auto answer = answers.find(request);
        if (answer == answers.end())
            return driver.ioctl(descriptor, request, argument);
        errno = answer->second(argument);
        return errno == 0 ? 0 : -1;
    }
    void* mmap(std::size_t length, int protection, int flags, int descriptor, off_t offset) override {
        return driver.mmap(length, protection, flags, descriptor, offset);
    }
    int munmap(void* address, std::size_t length) override { return driver.munmap(address, length); }
    int poll(pollfd* descriptors, nfds_t count, int timeoutInMs) override {
        return driver.poll(descriptors, count, timeoutInMs);
    }

    FakeDriver driver;
    std::map<unsigned long, Answer> answers;
};

class FormatListTest : public testing::Test {
protected:
    std::vector<std::string> list() {
        DeviceNode node(driver, videoPath);
        std::vector<std::string> texts;
        for (const StreamFormat& format : listFormats(node, V4L2_BUF_TYPE_VIDEO_CAPTURE).formats)
            texts.push_back(pixelFormatName(format.pixelFormat->code) + " " + std::to_string(format.width) + "x" +
                            std::to_string(format.height) + " @ " + std::to_string(format.frameRate()).substr(0, 5));
        return texts;
    }
    void useOnly(std::uint32_t code) {
        FakeDevice device = usbCamera();
        device.formats = {{code, {{640, 480, {{1, 30}}}}}};
        driver->driver.plug(videoPath, device);
    }
    void answerSizes(std::uint32_t type, const v4l2_frmsize_stepwise& range) {
        driver->answers[VIDIOC_ENUM_FRAMESIZES] = [=](void* argument) {
            auto& size = *static_cast<v4l2_frmsizeenum*>(argument);
            if (size.index > 0)
                return EINVAL;
            size.type = type;
            size.stepwise = range;
            return 0;
        };
    }
    void answerIntervals(std::uint32_t type, const v4l2_frmival_stepwise& range) {
        driver->answers[VIDIOC_ENUM_FRAMEINTERVALS] = [=](void* argument) {
            auto& interval = *static_cast<v4l2_frmivalenum*>(argument);
            if (interval.index > 0)
                return EINVAL;
            interval.type = type;
            interval.stepwise = range;
            return 0;
        };
    }

    const std::shared_ptr<AnsweringDriver> driver = std::make_shared<AnsweringDriver>();
};

using Texts = std::vector<std::string>;

TEST_F(FormatListTest, DiscreteListsAreTakenAsTheyAreWithThePreferredFormatsLast) {
    EXPECT_EQ(list(), (Texts{"MJPG 32x16 @ 30.00", "YUYV 16x8 @ 30.00", "YUYV 16x8 @ 15.00", "YUYV 32x16 @ 10.00"}));
}

TEST_F(FormatListTest, SteppedSizesGiveTheCommonOnesAndTheLargest) {
    useOnly(V4L2_PIX_FMT_YUYV);
    answerSizes(V4L2_FRMSIZE_TYPE_STEPWISE, {320, 1304, 8, 240, 1000, 2});
    EXPECT_EQ(list(),
              (Texts{"YUYV 320x240 @ 30.00", "YUYV 640x480 @ 30.00", "YUYV 800x600 @ 30.00", "YUYV 1024x768 @ 30.00",
                     "YUYV 1280x720 @ 30.00", "YUYV 1280x960 @ 30.00", "YUYV 1304x1000 @ 30.00"}));
}

TEST_F(FormatListTest, ContinuousSizesListTheLargestOnce) {
    useOnly(V4L2_PIX_FMT_YUYV);
    answerSizes(V4L2_FRMSIZE_TYPE_CONTINUOUS, {640, 800, 1, 480, 600, 1});
    EXPECT_EQ(list(), (Texts{"YUYV 640x480 @ 30.00", "YUYV 800x600 @ 30.00"}));
}

TEST_F(FormatListTest, TheLargestSizeIsOnTheGrid) {
    useOnly(V4L2_PIX_FMT_YUYV);
    answerSizes(V4L2_FRMSIZE_TYPE_STEPWISE, {32, 1311, 16, 32, 999, 0});
    EXPECT_EQ(list().back(), "YUYV 1296x999 @ 30.00");
}

TEST_F(FormatListTest, SizesThatNoPictureCanHaveAreLeftOut) {
    useOnly(V4L2_PIX_FMT_YUYV);
    for (const v4l2_frmsize_stepwise& range : {v4l2_frmsize_stepwise{640, 0xFFFF'FFFF, 640, 480, 0xFFFF'FFFF, 480},
                                               v4l2_frmsize_stepwise{640, 16'640, 640, 480, 16'320, 480}}) {
        answerSizes(V4L2_FRMSIZE_TYPE_STEPWISE, range);
        EXPECT_EQ(list(), (Texts{"YUYV 640x480 @ 30.00", "YUYV 1280x960 @ 30.00", "YUYV 2560x1440 @ 30.00"}));
    }
    answerSizes(V4L2_FRMSIZE_TYPE_DISCRETE, {});
    EXPECT_TRUE(list().empty());
}

TEST_F(FormatListTest, RangesOfRatesGiveTheCommonOnesAndBothEnds) {
    useOnly(V4L2_PIX_FMT_YUYV);
    for (const std::uint32_t type : {V4L2_FRMIVAL_TYPE_STEPWISE, V4L2_FRMIVAL_TYPE_CONTINUOUS}) {
        answerIntervals(type, {{1, 24}, {1, 8}, {1, 1000}});
        EXPECT_EQ(list(), (Texts{"YUYV 640x480 @ 8.000", "YUYV 640x480 @ 10.00", "YUYV 640x480 @ 15.00",
                                 "YUYV 640x480 @ 20.00", "YUYV 640x480 @ 24.00"}));
    }
}

TEST_F(FormatListTest, ADriverWithoutListsHasTheSizeThatItIsSetTo) {
    useOnly(V4L2_PIX_FMT_YUYV);
    driver->answers[VIDIOC_ENUM_FRAMESIZES] = [](void*) { return ENOTTY; };
    driver->answers[VIDIOC_ENUM_FRAMEINTERVALS] = [](void*) { return ENOTTY; };
    EXPECT_EQ(list(), (Texts{"YUYV 640x480 @ 30.00"}));
}

TEST_F(FormatListTest, RatesThatMakeNoSenseAreLeftOut) {
    useOnly(V4L2_PIX_FMT_YUYV);
    answerIntervals(V4L2_FRMIVAL_TYPE_CONTINUOUS, {{0, 1}, {1, 8}, {1, 1000}});
    EXPECT_EQ(list(), (Texts{"YUYV 640x480 @ 30.00"}));
    driver->answers[VIDIOC_ENUM_FRAMEINTERVALS] = [](void* argument) {
        auto& interval = *static_cast<v4l2_frmivalenum*>(argument);
        interval.type = V4L2_FRMIVAL_TYPE_DISCRETE;
        interval.discrete = {1, interval.index}; // 1/0 first
        return interval.index < 2 ? 0 : EINVAL;
    };
    EXPECT_EQ(list(), (Texts{"YUYV 640x480 @ 1.000"}));
}

TEST_F(FormatListTest, AListWithoutEndIsCutOff) {
    driver->answers[VIDIOC_ENUM_FMT] = [](void* argument) {
        static_cast<v4l2_fmtdesc*>(argument)->pixelformat = V4L2_PIX_FMT_H264;
        return 0;
    };
    EXPECT_TRUE(list().empty());
}

class NodeDescriptionTest : public testing::Test {
protected:
    std::optional<NodeDescription> describe(const FakeDevice& device) {
        driver->plug(videoPath, device);
        DeviceNode node(driver, videoPath);
        return describeNode(node);
    }
    MediaFrameSourceKind kindWith(const std::vector<std::uint32_t>& codes) {
        FakeDevice device = usbCamera();
        device.formats.clear();
        for (const std::uint32_t code : codes)
            device.formats.push_back({code, {{16, 8, {{1, 30}}}}});
        return describe(device)->kind;
    }

    const std::shared_ptr<FakeDriver> driver = std::make_shared<FakeDriver>();
};

TEST_F(NodeDescriptionTest, ACapturingNodeOfEitherInterfaceIsACamera) {
    const auto single = describe(usbCamera());
    ASSERT_TRUE(single);
    EXPECT_EQ(single->driver, "uvcvideo");
    EXPECT_EQ(single->card, "Fake Camera");
    EXPECT_EQ(single->bus, "usb-0000:00:14.0-1");
    EXPECT_EQ(single->bufferType, V4L2_BUF_TYPE_VIDEO_CAPTURE);
    EXPECT_EQ(single->kind, MediaFrameSourceKind::Color);
    EXPECT_EQ(single->formats.size(), 4u);
    FakeDevice device = usbCamera();
    device.capabilities = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
    device.formats.pop_back();
    EXPECT_TRUE(describe(device)->isMultiPlanar());
}

TEST_F(NodeDescriptionTest, OtherNodesAreNone) {
    for (const std::uint32_t capabilities :
         {V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING, V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING,
          V4L2_CAP_VIDEO_OUTPUT_MPLANE | V4L2_CAP_STREAMING, V4L2_CAP_VIDEO_M2M | V4L2_CAP_STREAMING,
          V4L2_CAP_VIDEO_M2M_MPLANE | V4L2_CAP_STREAMING, V4L2_CAP_VBI_CAPTURE | V4L2_CAP_STREAMING,
          V4L2_CAP_RADIO | V4L2_CAP_TUNER, V4L2_CAP_TOUCH | V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING,
          V4L2_CAP_IO_MC | V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING, V4L2_CAP_SDR_CAPTURE | V4L2_CAP_STREAMING,
          V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_READWRITE,
          V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_OUTPUT | V4L2_CAP_STREAMING}) {
        FakeDevice device = usbCamera();
        device.capabilities = capabilities;
        EXPECT_FALSE(describe(device)) << std::hex << capabilities;
    }
}

TEST_F(NodeDescriptionTest, TheKindFollowsFromAllFormats) {
    EXPECT_EQ(kindWith({V4L2_PIX_FMT_GREY}), MediaFrameSourceKind::Infrared);
    EXPECT_EQ(kindWith({V4L2_PIX_FMT_GREY, V4L2_PIX_FMT_Y16}), MediaFrameSourceKind::Infrared);
    EXPECT_EQ(kindWith({V4L2_PIX_FMT_Z16}), MediaFrameSourceKind::Depth);
    EXPECT_EQ(kindWith({V4L2_PIX_FMT_GREY, V4L2_PIX_FMT_Z16}), MediaFrameSourceKind::Depth);
    EXPECT_EQ(kindWith({V4L2_PIX_FMT_GREY, V4L2_PIX_FMT_YUYV}), MediaFrameSourceKind::Color);
    EXPECT_EQ(kindWith({V4L2_PIX_FMT_H264}), MediaFrameSourceKind::Custom);
    EXPECT_EQ(kindWith({}), MediaFrameSourceKind::Custom);
}

TEST(PixelFormatsTest, HaveTheirCodesAsNames) {
    EXPECT_EQ(pixelFormatName(V4L2_PIX_FMT_NV12), "NV12");
    EXPECT_EQ(pixelFormatName(v4l2_fourcc('Y', '4', ' ', ' ')), "Y4");
    EXPECT_EQ(pixelFormatName(v4l2_fourcc(1, 'A', 'B', 'C')), "?ABC");
}

TEST(PixelFormatsTest, ByteOrdersAreTheKernels) {
    const auto formatOf = [](std::uint32_t code) { return findPixelFormat(code)->format; };
    using Imaging::FrameFormat;
    EXPECT_EQ(formatOf(V4L2_PIX_FMT_RGB24), FrameFormat::Rgb24);
    EXPECT_EQ(formatOf(V4L2_PIX_FMT_BGR24), FrameFormat::Bgr24);
    EXPECT_EQ(formatOf(V4L2_PIX_FMT_ABGR32), FrameFormat::Bgrx32);
    EXPECT_EQ(formatOf(V4L2_PIX_FMT_XBGR32), FrameFormat::Bgrx32);
    EXPECT_EQ(formatOf(V4L2_PIX_FMT_BGR32), FrameFormat::Bgrx32);
    EXPECT_EQ(formatOf(V4L2_PIX_FMT_BGRA32), FrameFormat::Xbgr32);
    EXPECT_EQ(formatOf(V4L2_PIX_FMT_RGBA32), FrameFormat::Rgbx32);
    EXPECT_EQ(formatOf(V4L2_PIX_FMT_ARGB32), FrameFormat::Xrgb32);
    EXPECT_EQ(formatOf(V4L2_PIX_FMT_RGB32), FrameFormat::Xrgb32);
    EXPECT_EQ(findPixelFormat(V4L2_PIX_FMT_H264), nullptr);
}

} // namespace
} // namespace Platform::V4l2
