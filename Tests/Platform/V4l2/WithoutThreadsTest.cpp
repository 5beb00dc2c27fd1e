#include "Platform/V4l2/Discovery/DeviceCatalog.h"
#include "Tests/Platform/V4l2/CameraFixture.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FailingSystemCall.h"

#include <functional>
#include <future>

namespace Platform::V4l2 {
namespace {

struct Camera final : CameraFixture {
    using CameraFixture::driver;
    using CameraFixture::group;
    using CameraFixture::lister;
    using CameraFixture::open;
    using CameraFixture::platform;
    using CameraFixture::startReader;
    using CameraFixture::still;
    using CameraFixture::videoPath;
    void TestBody() override {}
};

/// The work gets a camera in a process of its own, in which threads can be made until `letThreadStartsFail`.
void inChild(const std::function<void(Camera&)>& work) {
    const int result = runInChild([&work] {
        Camera camera;
        work(camera);
    });
    EXPECT_EQ(result, 0);
}

TEST(WithoutThreadsTest, AWatcherDoesNotStart) {
    inChild([](Camera& camera) {
        const auto watcher = camera.platform->CreateWatcher(camera.platform->GetDeviceSelector());
        ASSERT_TRUE(letThreadStartsFail());
        EXPECT_EQ(raisedBy([&] { watcher->Start(); }),
                  "80004005 pthread_create on the device watcher: Resource temporarily unavailable");
    });
}

TEST(WithoutThreadsTest, ACameraIsNotOpened) {
    inChild([](Camera& camera) {
        const auto group = camera.group(); // found while there were threads
        const auto capture = camera.platform->CreateMediaCapture();
        ASSERT_TRUE(letThreadStartsFail());
        EXPECT_EQ(raisedBy([&] {
                      blockingWait(capture->InitializeAsync(
                          {group, PhotoCaptureSource::VideoPreview, StreamingCaptureMode::Video}));
                  }),
                  "80004005 pthread_create on /dev/video0: Resource temporarily unavailable");
    });
}

TEST(WithoutThreadsTest, ANewCameraIsLookedAtLater) {
    inChild([](Camera& camera) {
        const auto pool = std::make_shared<Shared::WorkerPool>();
        DeviceCatalog catalog(camera.driver, camera.lister, pool, std::chrono::seconds(10));
        std::promise<void> release;
        pool->post([pool, released = release.get_future().share()] { released.wait(); });
        ASSERT_TRUE(letThreadStartsFail());
        const auto groups = catalog.groups();
        ASSERT_EQ(groups.size(), 1u);
        EXPECT_EQ(raisedBy([&] { throw winrt::hresult_error(groups.front()->error.value()); }),
                  "80004005 pthread_create on the worker pool: Resource temporarily unavailable");
        release.set_value();
        pool->windDown(std::chrono::seconds(10));
        EXPECT_FALSE(catalog.groups().front()->error.has_value());
    });
}

TEST(WithoutThreadsTest, AnOpenCameraGoesOnAndLetsGo) {
    inChild([](Camera& camera) {
        const auto capture = camera.open();
        const auto reader = camera.startReader(capture);
        const FrameClock clock(*camera.driver, Camera::videoPath);
        ASSERT_TRUE(letThreadStartsFail());
        const auto picture = camera.still(capture);
        ASSERT_TRUE(picture.has_value());
        EXPECT_FALSE(picture->empty());
        blockingWait(reader->StopAsync());
        capture->Close();
    });
}

} // namespace
} // namespace Platform::V4l2
