#include "Tests/Platform/V4l2/FakeKernel/FakeDriver.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cerrno>

namespace Platform::V4l2 {
namespace {

constexpr const char* videoPath = "/dev/video0";

class FakeDriverTest : public testing::Test {
protected:
    FakeDriverTest() { driver.plug(videoPath, usbCamera()); }

    template <typename Argument> int errorOf(int descriptor, unsigned long request, Argument& argument) {
        errno = 0;
        return driver.ioctl(descriptor, request, &argument) == 0 ? 0 : errno;
    }
    int request(int descriptor, std::uint32_t count) {
        v4l2_requestbuffers argument{};
        argument.count = count;
        argument.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        argument.memory = V4L2_MEMORY_MMAP;
        return errorOf(descriptor, VIDIOC_REQBUFS, argument);
    }
    int queue(int descriptor, std::uint32_t index) {
        v4l2_buffer argument{};
        argument.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        argument.index = index;
        return errorOf(descriptor, VIDIOC_QBUF, argument);
    }
    int dequeue(int descriptor, v4l2_buffer& argument) {
        argument = {};
        argument.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        return errorOf(descriptor, VIDIOC_DQBUF, argument);
    }
    int turn(int descriptor, unsigned long request) {
        int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
        return errorOf(descriptor, request, type);
    }
    int set(int descriptor, std::uint32_t id, std::int32_t value) {
        v4l2_control argument{id, value};
        return errorOf(descriptor, VIDIOC_S_CTRL, argument);
    }

    FakeDriver driver;
};

TEST_F(FakeDriverTest, OpensOnlyWhatIsThere) {
    EXPECT_EQ(driver.open("/dev/video9", O_RDWR), -1);
    EXPECT_EQ(errno, ENOENT);
    const int descriptor = driver.open(videoPath, O_RDWR);
    ASSERT_GE(descriptor, 0);
    EXPECT_EQ(driver.openDescriptors(), 1u);
    EXPECT_EQ(driver.close(descriptor), 0);
    EXPECT_EQ(driver.close(descriptor), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_EQ(driver.openDescriptors(), 0u);
}

TEST_F(FakeDriverTest, FullBuffersComeInOrderAndLaterFramesAreLost) {
    const int descriptor = driver.open(videoPath, O_RDWR);
    ASSERT_EQ(request(descriptor, 2), 0);
    ASSERT_EQ(queue(descriptor, 0), 0);
    ASSERT_EQ(queue(descriptor, 1), 0);
    EXPECT_EQ(queue(descriptor, 1), EINVAL);
    EXPECT_EQ(queue(descriptor, 2), EINVAL);
    EXPECT_FALSE(driver.deliver(videoPath));
    ASSERT_EQ(turn(descriptor, VIDIOC_STREAMON), 0);
    v4l2_buffer buffer{};
    EXPECT_EQ(dequeue(descriptor, buffer), EAGAIN);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(driver.deliver(videoPath));
    ASSERT_EQ(dequeue(descriptor, buffer), 0);
    EXPECT_EQ(buffer.sequence, 0u);
    ASSERT_EQ(dequeue(descriptor, buffer), 0);
    EXPECT_EQ(buffer.sequence, 1u);
    EXPECT_EQ(dequeue(descriptor, buffer), EAGAIN);
    ASSERT_EQ(queue(descriptor, 0), 0);
    EXPECT_TRUE(driver.deliver(videoPath));
    ASSERT_EQ(dequeue(descriptor, buffer), 0);
    EXPECT_EQ(buffer.sequence, 3u);
    driver.close(descriptor);
}

TEST_F(FakeDriverTest, OneDescriptorAtATimeHoldsTheBuffers) {
    const int first = driver.open(videoPath, O_RDWR);
    const int second = driver.open(videoPath, O_RDWR);
    ASSERT_EQ(request(first, 2), 0);
    EXPECT_EQ(request(second, 2), EBUSY);
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    EXPECT_EQ(errorOf(first, VIDIOC_S_FMT, format), EBUSY);
    driver.close(first);
    EXPECT_EQ(request(second, 2), 0);
    driver.close(second);
}

TEST_F(FakeDriverTest, FormatsAreReplacedByTheNearestWithoutAWord) {
    const int descriptor = driver.open(videoPath, O_RDWR);
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.pixelformat = V4L2_PIX_FMT_RGB24;
    format.fmt.pix.width = 31;
    format.fmt.pix.height = 17;
    ASSERT_EQ(errorOf(descriptor, VIDIOC_S_FMT, format), 0);
    EXPECT_EQ(format.fmt.pix.pixelformat, V4L2_PIX_FMT_YUYV);
    EXPECT_EQ(format.fmt.pix.width, 32u);
    driver.close(descriptor);
}

TEST_F(FakeDriverTest, ControlsBelongToTheirAutomaticAndAreClamped) {
    const int descriptor = driver.open(videoPath, O_RDWR);
    EXPECT_EQ(set(descriptor, V4L2_CID_EXPOSURE_ABSOLUTE, 100), EACCES);
    EXPECT_EQ(set(descriptor, V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_AUTO), EINVAL);
    EXPECT_EQ(set(descriptor, V4L2_CID_EXPOSURE_AUTO, V4L2_EXPOSURE_MANUAL), 0);
    EXPECT_EQ(set(descriptor, V4L2_CID_EXPOSURE_ABSOLUTE, -5), 0);
    EXPECT_EQ(driver.control(videoPath, V4L2_CID_EXPOSURE_ABSOLUTE), 2047);
    EXPECT_EQ(set(descriptor, V4L2_CID_EXPOSURE_ABSOLUTE, 1), 0);
    EXPECT_EQ(driver.control(videoPath, V4L2_CID_EXPOSURE_ABSOLUTE), 3);
    EXPECT_EQ(set(descriptor, V4L2_CID_GAIN, 1), EINVAL);
    driver.close(descriptor);
}

TEST_F(FakeDriverTest, APulledDeviceFailsEveryCall) {
    const int descriptor = driver.open(videoPath, O_RDWR);
    ASSERT_EQ(request(descriptor, 1), 0);
    ASSERT_EQ(queue(descriptor, 0), 0);
    ASSERT_EQ(turn(descriptor, VIDIOC_STREAMON), 0);
    driver.unplug(videoPath);
    pollfd waited{descriptor, POLLIN, 0};
    EXPECT_EQ(driver.poll(&waited, 1, 1000), 1);
    EXPECT_EQ(waited.revents, POLLERR | POLLHUP);
    v4l2_buffer buffer{};
    EXPECT_EQ(dequeue(descriptor, buffer), ENODEV);
    EXPECT_EQ(turn(descriptor, VIDIOC_STREAMOFF), ENODEV);
    EXPECT_EQ(driver.mmap(1, PROT_READ, MAP_SHARED, descriptor, 0), MAP_FAILED);
    EXPECT_EQ(driver.open(videoPath, O_RDWR), -1);
    EXPECT_EQ(driver.close(descriptor), 0);
}

TEST_F(FakeDriverTest, InjectedErrorsHitTheCallsThatWereMeant) {
    driver.failOn(VIDIOC_STREAMOFF, EIO, 1, 1);
    const int descriptor = driver.open(videoPath, O_RDWR);
    EXPECT_EQ(turn(descriptor, VIDIOC_STREAMOFF), 0);
    EXPECT_EQ(turn(descriptor, VIDIOC_STREAMOFF), EIO);
    EXPECT_EQ(turn(descriptor, VIDIOC_STREAMOFF), 0);
    driver.close(descriptor);
}

TEST_F(FakeDriverTest, MappingsAreCounted) {
    const int descriptor = driver.open(videoPath, O_RDWR);
    ASSERT_EQ(request(descriptor, 1), 0);
    void* const address = driver.mmap(256, PROT_READ, MAP_SHARED, descriptor, 0);
    ASSERT_NE(address, MAP_FAILED);
    EXPECT_EQ(driver.mappings(), 1u);
    EXPECT_EQ(driver.munmap(address, 255), -1);
    EXPECT_EQ(driver.munmap(address, 256), 0);
    EXPECT_EQ(driver.mappings(), 0u);
    driver.close(descriptor);
}

} // namespace
} // namespace Platform::V4l2
