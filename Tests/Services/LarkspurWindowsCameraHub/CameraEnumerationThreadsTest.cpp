#include "Tests/Services/LarkspurWindowsCameraHub/CameraEnumerationFixture.h"

#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

/// A clock whose sleeps last until they are let go.
class BlockingClock final : public Halden::Clock {
public:
    void sleepFor(std::chrono::milliseconds) override {
        std::unique_lock lock(_mutex);
        ++_sleepers;
        _condition.notify_all();
        _condition.wait(lock, [this] { return _isReleased; });
    }
    std::chrono::steady_clock::time_point deadlineAfter(std::chrono::milliseconds limit) override {
        return std::chrono::steady_clock::now() + limit;
    }

    bool waitForSleeper() {
        std::unique_lock lock(_mutex);
        return _condition.wait_for(lock, patience, [this] { return _sleepers > 0; });
    }
    void release() {
        {
            std::lock_guard lock(_mutex);
            _isReleased = true;
        }
        _condition.notify_all();
    }

private:
    std::mutex _mutex;
    std::condition_variable _condition;
    int _sleepers = 0;
    bool _isReleased = false;
};

/// Puts a blocking clock in the process's place for a scope, at the end of which all sleepers wake.
class BlockedSleeps {
public:
    BlockedSleeps() = default;
    ~BlockedSleeps() { clock->release(); }
    BlockedSleeps(const BlockedSleeps&) = delete;
    BlockedSleeps& operator=(const BlockedSleeps&) = delete;

    const std::shared_ptr<BlockingClock> clock = std::make_shared<BlockingClock>();

private:
    const ScopedClock _scope{clock};
};

class CameraEnumerationThreadsTest : public CameraEnumerationFixture {};

TEST_F(CameraEnumerationThreadsTest, ADeviceIsGivenHalfASecondBeforeItIsOpened) {
    useScenario(groups(group("cam")));
    const BlockedSleeps sleeps;
    start();
    ASSERT_TRUE(sleeps.clock->waitForSleeper());
    EXPECT_TRUE(uids().empty()) << "and the map can be read meanwhile";
    EXPECT_TRUE(callsOf("MediaFrameSourceGroup.FromIdAsync").empty());
    sleeps.clock->release();
    EXPECT_TRUE(waitForUids({"cam"}));
}

TEST_F(CameraEnumerationThreadsTest, ARemovalDuringTheDelayDoesNotKeepTheRecordOut) {
    startScripted(groups(group("cam")));
    std::thread platformThread;
    {
        const BlockedSleeps sleeps;
        platformThread = std::thread([this] { watcher->added(deviceWithId("cam")); });
        EXPECT_TRUE(sleeps.clock->waitForSleeper());
        watcher->removed(updateOf("cam"));
        EXPECT_EQ(lines(), Lines{"INFO Device removed: cam"});
        EXPECT_TRUE(uids().empty());
    }
    platformThread.join();
    EXPECT_EQ(uids(), Lines{"cam"});
    EXPECT_EQ(lines().back(), "INFO Device added: cam");
}

TEST_F(CameraEnumerationThreadsTest, ARemovalDuringTheOpeningDoesNotKeepTheRecordOut) {
    useScenario(
        groups(group("cam")) +
        R"(, "cameras": {"cam": {"faults": {"MediaCapture.InitializeAsync": {"fails": false, "delayMs": 200}}}})");
    watcher = std::make_shared<ScriptedWatcher>();
    AlteredPlatform::install()->watcher = watcher;
    start();
    std::thread platformThread([this] { watcher->added(deviceWithId("cam")); });
    EXPECT_TRUE(journal().waitForCall("MediaCapture.InitializeAsync"));
    EXPECT_TRUE(uids().empty()) << "the map can be read meanwhile";
    watcher->removed(updateOf("cam"));
    platformThread.join();
    EXPECT_EQ(uids(), Lines{"cam"});
}

TEST_F(CameraEnumerationThreadsTest, EventsAfterItsEndDoNothing) {
    startScripted(groups(group("cam")));
    enumeration.reset();
    EXPECT_EQ(watcher->added(deviceWithId("cam")), winrt::result::ok);
    EXPECT_EQ(watcher->updated(updateOf("cam")), winrt::result::ok);
    EXPECT_EQ(watcher->removed(updateOf("cam")), winrt::result::ok);
    EXPECT_EQ(watcher->enumerationCompleted(), winrt::result::ok);
    EXPECT_EQ(watcher->stopped(), winrt::result::ok);
    EXPECT_TRUE(clock().calls().empty());
    EXPECT_TRUE(log().records().empty());
}

TEST_F(CameraEnumerationThreadsTest, TheHandlersHoldItOnlyWhileTheyRun) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    const std::weak_ptr<CameraEnumeration> weak = enumeration;
    EXPECT_EQ(weak.use_count(), 1);
    enumeration.reset();
    EXPECT_TRUE(weak.expired());
}

TEST_F(CameraEnumerationThreadsTest, ItMayEndWhileAHandlerSleeps) {
    useScenario(groups(group("cam")));
    std::weak_ptr<CameraEnumeration> weak;
    {
        const BlockedSleeps sleeps;
        start();
        ASSERT_TRUE(sleeps.clock->waitForSleeper());
        weak = enumeration;
        enumeration.reset();
        EXPECT_FALSE(weak.expired());
    }
    EXPECT_TRUE(waitUntil([&] { return weak.expired(); })) << "the handler destroys it";
    EXPECT_EQ(linesOf("INFO"), Lines{"Device added: cam"});
    EXPECT_TRUE(linesOf("ERROR").empty());
}

TEST_F(CameraEnumerationThreadsTest, ItsMapMayBeReadWhileCamerasComeAndGo) {
    startScripted(groups(group("cam") + ", " + group("dog")));
    std::thread platformThread([this] {
        for (int i = 0; i < 10; ++i) {
            watcher->added(deviceWithId("cam"));
            watcher->updated(updateOf("cam", {{u"count", std::u16string(u"1")}}));
            watcher->removed(updateOf("cam"));
        }
    });
    watcher->added(deviceWithId("dog"));
    for (int i = 0; i < 200; ++i) {
        for (const auto& [uid, camera] : enumeration->getCameras()) {
            EXPECT_EQ(uid, camera.description.uid);
            EXPECT_EQ(camera.deviceInformation->Id(), Halden::toUtf16(uid));
        }
    }
    platformThread.join();
    EXPECT_EQ(uids(), Lines{"dog"});
}

TEST_F(CameraEnumerationThreadsTest, AClientThatAsksBeforeTheDelayIsOverSeesNoCamera) {
    useScenario(groups(group("cam")));
    const BlockedSleeps sleeps;
    PavoCameraClient client(-1, std::make_shared<CameraServer>());
    ASSERT_TRUE(sleeps.clock->waitForSleeper());
    EXPECT_EQ(client.messageHandler(R"({"id":1,"method":"camera:discover"})"),
              "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":[]}\n");
    sleeps.clock->release();
    EXPECT_NE(discovered(client).find(R"("uid":"cam")"), std::string::npos);
}

} // namespace
