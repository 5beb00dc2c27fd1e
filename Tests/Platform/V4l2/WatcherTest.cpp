#include "Tests/Platform/V4l2/CameraFixture.h"

#include <cerrno>
#include <mutex>

namespace Platform::V4l2 {
namespace {

class WatcherTest : public CameraFixture {
protected:
    /// Before the handlers' notes go.
    ~WatcherTest() override {
        watcher.reset();
        platform.reset();
    }

    void start() {
        watcher = platform->CreateWatcher(platform->GetDeviceSelector());
        watcher->Added([this](const DeviceWatcher&, const DeviceInformation& device) {
            return note("added " + narrow(device->Id()));
        });
        watcher->Removed([this](const DeviceWatcher&, const DeviceInformationUpdate& update) {
            return note("removed " + narrow(update->Id()));
        });
        watcher->EnumerationCompleted([this](const DeviceWatcher&) { return note("complete"); });
        watcher->Start();
    }
    static std::string narrow(const std::u16string& text) { return {text.begin(), text.end()}; }
    winrt::hresult note(std::string text) {
        std::lock_guard lock(mutex);
        notes.push_back(std::move(text));
        return winrt::result::ok;
    }
    std::vector<std::string> noted() {
        std::lock_guard lock(mutex);
        return notes;
    }
    bool noteComes(std::size_t count) {
        return waitUntil([&] { return noted().size() >= count; });
    }

    std::mutex mutex;
    std::vector<std::string> notes;
    DeviceWatcher watcher;
};

constexpr const char* cameraId = "usb-Maker_Ltd_Model_5_1234-if00-video-index0";

TEST_F(WatcherTest, ReportsWhatIsThereAndThenThatThisWasAll) {
    start();
    ASSERT_TRUE(noteComes(2));
    EXPECT_EQ(noted(), (std::vector<std::string>{std::string("added ") + cameraId, "complete"}));
}

TEST_F(WatcherTest, ReportsComingAndGoing) {
    start();
    ASSERT_TRUE(noteComes(2));
    driver->plug("/dev/video1", usbCamera());
    lister->add(usbNode(1, "5678"));
    ASSERT_TRUE(noteComes(3));
    EXPECT_EQ(noted()[2], "added usb-Maker_Ltd_Model_5_5678-if00-video-index0");
    driver->unplug(videoPath);
    lister->remove(usbNode(0).systemPath);
    ASSERT_TRUE(noteComes(4));
    EXPECT_EQ(noted()[3], std::string("removed ") + cameraId);
}

TEST_F(WatcherTest, ACameraThatIsPulledAndPluggedAtOnceHasGoneAndCome) {
    start();
    ASSERT_TRUE(noteComes(2));
    VideoNode again = usbNode(0);
    again.usb->session = "1.99";
    lister->replace(again);
    ASSERT_TRUE(noteComes(4));
    EXPECT_EQ(noted()[2], std::string("removed ") + cameraId);
    EXPECT_EQ(noted()[3], std::string("added ") + cameraId);
}

TEST_F(WatcherTest, ANodeThatIsBoundAnewUnchangedHasGoneAndCome) {
    start();
    ASSERT_TRUE(noteComes(2));
    lister->replace(usbNode(0));
    ASSERT_TRUE(noteComes(4));
    EXPECT_EQ(noted()[3], std::string("added ") + cameraId);
}

TEST_F(WatcherTest, NewsOfOtherDevicesReportNothing) {
    start();
    ASSERT_TRUE(noteComes(2));
    lister->touch();
    driver->plug("/dev/video1", usbCamera());
    lister->add(usbNode(1, "5678"));
    ASSERT_TRUE(noteComes(3));
    EXPECT_EQ(noted().size(), 3u);
}

TEST_F(WatcherTest, ACameraWithoutPermissionIsReportedAndItsLookUpSaysWhy) {
    driver->failOn(openCall, EACCES);
    start();
    ASSERT_TRUE(noteComes(2));
    EXPECT_EQ(noted()[0], std::string("added ") + cameraId);
    const auto id = std::u16string(cameraId, cameraId + std::string(cameraId).size());
    EXPECT_EQ(raisedBy([&] { blockingWait(platform->FromIdAsync(id)); }),
              "80070005 open on /dev/video0: Permission denied (the user that runs the hub must be in the group "
              "\"video\")");
    EXPECT_EQ(blockingWait(platform->FindAllAsync()).Size(), 0u);
    driver->heal();
    lister->touch(); // udev has set the permissions
    ASSERT_TRUE(noteComes(4));
    EXPECT_EQ(noted()[3], std::string("added ") + cameraId);
    EXPECT_EQ(blockingWait(platform->FromIdAsync(id))->Id(), id);
}

TEST_F(WatcherTest, CamerasStayWhileTheSystemCannotBeAskedAndItIsAskedAgain) {
    start();
    ASSERT_TRUE(noteComes(2));
    lister->refuseToList(EMFILE);
    lister->replace(usbNode(0)); // has gone and come, unseen
    EXPECT_EQ(raisedBy([this] { blockingWait(platform->FindAllAsync()); }).substr(0, 30),
              "80004005 list on the fake list");
    EXPECT_EQ(noted().size(), 2u);
    lister->refuseToList(0);
    ASSERT_TRUE(noteComes(4));
    EXPECT_EQ(noted()[2], std::string("removed ") + cameraId);
    EXPECT_EQ(noted()[3], std::string("added ") + cameraId);
}

TEST_F(WatcherTest, StartRaisesWhereListeningIsNotPossibleAndMayBeTriedAgain) {
    lister->refuseToMonitor(EPERM);
    EXPECT_EQ(raisedBy([&] { start(); }), "80070005 monitor on video4linux: Operation not permitted");
    lister->refuseToMonitor(0);
    watcher->Start();
    EXPECT_TRUE(noteComes(2));
    EXPECT_EQ(raisedBy([&] { watcher->Start(); }).substr(0, 9), "8000000E ");
}

TEST_F(WatcherTest, MayBeDestroyedAtAnyMoment) {
    for (int i = 0; i < 50; ++i) {
        auto shortLived = platform->CreateWatcher(platform->GetDeviceSelector());
        shortLived->Added([](const DeviceWatcher&, const DeviceInformation&) { return winrt::result::ok; });
        shortLived->Start();
        lister->touch();
        shortLived.reset();
    }
}

TEST_F(WatcherTest, MayBeDestroyedByItsOwnHandler) {
    auto holder = std::make_shared<DeviceWatcher>(platform->CreateWatcher(platform->GetDeviceSelector()));
    const auto done = std::make_shared<std::atomic<bool>>(false);
    (*holder)->Added([done, holder](const DeviceWatcher&, const DeviceInformation&) {
        holder->reset();
        *done = true;
        return winrt::result::ok;
    });
    (*holder)->Start();
    EXPECT_TRUE(waitUntil([&] { return done->load(); }));
}

} // namespace
} // namespace Platform::V4l2
