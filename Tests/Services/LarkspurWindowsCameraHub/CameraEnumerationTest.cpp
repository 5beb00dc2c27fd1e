#include "Services/LarkspurWindowsCameraHub/CameraEnumeration.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/DeviceInformationValue.h"
#include "Services/LarkspurWindowsCameraHub/PavoCameraClient.h"
#include "Tests/Services/LarkspurWindowsCameraHub/AlteredPlatform.h"
#include "Tests/Services/LarkspurWindowsCameraHub/ScriptedWatcher.h"
#include "Tests/Services/LarkspurWindowsCameraHub/SimulatedHub.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <thread>

namespace {

using Lines = std::vector<std::string>;
using Platform::PropertyMap;

/// A group of one colour source in JSON, reported as the device `watched`; `members` are more members of the
/// source's device.
std::string group(const std::string& device, int width = 16, const std::string& watched = "",
                  const std::string& members = "") {
    const std::string reported = watched.empty() ? device : watched;
    return R"({"id": "group of )" + reported + R"(", "watched": {"id": ")" + reported +
           R"("}, "sources": [{"id": "S", "device": {"id": ")" + device + R"(", "name": "Camera")" + members +
           R"(}, "profiles": [{"width": )" + std::to_string(width) + R"(, "height": 12}]}]})";
}

std::string groups(const std::string& list) { return R"("groups": [)" + list + "]"; }

Platform::DeviceInformationUpdate updateOf(const std::string& id, const PropertyMap& properties = {}) {
    return std::make_shared<Platform::Shared::DeviceInformationUpdateValue>(Halden::toUtf16(id), properties);
}

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
        return _condition.wait_for(lock, std::chrono::seconds(10), [this] { return _sleepers > 0; });
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

/// A device or an update whose Id raises from that call on, counted from 0.
template <typename Error> class Unreadable final : public Platform::IDeviceInformation,
                                                   public Platform::IDeviceInformationUpdate {
public:
    Unreadable(Error error, int readable) : _error(std::move(error)), _readable(readable) {}

    std::u16string Id() const override {
        if (_readable-- > 0)
            return u"cam";
        throw _error;
    }
    std::u16string Name() const override { return {}; }
    Platform::DeviceInformationKind Kind() const override { return {}; }
    std::optional<Platform::EnclosureLocation> EnclosureLocation() const override { return {}; }
    PropertyMap Properties() const override { throw _error; }
    void Update(const Platform::DeviceInformationUpdate&) override {}

private:
    const Error _error;
    mutable int _readable;
};

template <typename Error> std::shared_ptr<Unreadable<Error>> unreadable(Error error, int readable = 0) {
    return std::make_shared<Unreadable<Error>>(std::move(error), readable);
}

class CameraEnumerationTest : public SimulatedHub {
protected:
    void start() {
        enumeration = std::make_shared<CameraEnumeration>();
        enumeration->initialize();
    }

    /// As start, on those cameras, with events that the test reports itself.
    void startScripted(const std::string& members) {
        useScenario(members);
        watcher = std::make_shared<ScriptedWatcher>();
        AlteredPlatform::install()->watcher = watcher;
        start();
    }

    Lines uids() const {
        Lines found;
        for (const auto& [uid, camera] : enumeration->getCameras())
            found.push_back(uid);
        return found;
    }

    CameraDescription description(const std::string& uid) const {
        return enumeration->getCameras().at(uid).description;
    }

    bool waitForUids(const Lines& expected) const {
        return waitUntil([&] { return uids() == expected; });
    }
    bool waitForLine(const std::string& line) const {
        return waitUntil([&] {
            const Lines all = lines();
            return std::find(all.begin(), all.end(), line) != all.end();
        });
    }

    std::shared_ptr<ScriptedWatcher> watcher;
    std::shared_ptr<CameraEnumeration> enumeration;
};

const winrt::hresult_error deviceLost(-77, u"lost");

TEST_F(CameraEnumerationTest, TheWatcherIsMadeOfThePlatformsSelectorAndStartedLast) {
    startScripted(groups(""));
    EXPECT_EQ(watcher->calls(), (Lines{"Added", "Updated", "Removed", "EnumerationCompleted", "Stopped", "Start"}));
    EXPECT_TRUE(enumeration->isWatcherStarted());
    EXPECT_TRUE(lines().empty());
    useScenario(groups(""));
    start();
    EXPECT_EQ(calls(), (Lines{"MediaFrameSourceGroup.GetDeviceSelector", "DeviceInformation.CreateWatcher",
                              "DeviceWatcher.Start"}));
}

TEST_F(CameraEnumerationTest, ANewOneKnowsNoCamera) {
    const CameraEnumeration fresh;
    EXPECT_FALSE(fresh.isWatcherStarted());
    EXPECT_TRUE(fresh.getCameras().empty());
    EXPECT_TRUE(calls().empty());
}

TEST_F(CameraEnumerationTest, DevicesThatArePresentAppearByUidInTheOrderOfBytes) {
    useScenario(groups(group("b") + ", " + group("ä") + ", " + group("a") + ", " + group("ab") + ", " + group("B")));
    start();
    EXPECT_TRUE(waitForUids({"B", "a", "ab", "b", "ä"}));
}

TEST_F(CameraEnumerationTest, AnotherLetterCaseIsAnotherCamera) {
    startScripted(groups(group("cam") + ", " + group("CAM")));
    watcher->added(deviceWithId("cam"));
    watcher->added(deviceWithId("CAM"));
    EXPECT_EQ(uids(), (Lines{"CAM", "cam"}));
    watcher->removed(updateOf("Cam"));
    EXPECT_EQ(uids(), (Lines{"CAM", "cam"}));
    watcher->removed(updateOf("CAM"));
    EXPECT_EQ(uids(), Lines{"cam"});
}

TEST_F(CameraEnumerationTest, ADeviceIsGivenHalfASecondBeforeItIsOpened) {
    useScenario(groups(group("cam")));
    const BlockedSleeps sleeps;
    start();
    ASSERT_TRUE(sleeps.clock->waitForSleeper());
    EXPECT_TRUE(uids().empty()) << "and the map can be read meanwhile";
    EXPECT_TRUE(callsOf("MediaFrameSourceGroup.FromIdAsync").empty());
    sleeps.clock->release();
    EXPECT_TRUE(waitForUids({"cam"}));
}

TEST_F(CameraEnumerationTest, EachAddedDeviceWaits500MillisecondsWhateverItIs) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    watcher->added(deviceWithId("unknown"));
    EXPECT_EQ(clock().sleeps(), (std::vector<FakeClock::Duration>(2, std::chrono::milliseconds(500))));
    watcher->updated(updateOf("cam"));
    watcher->removed(updateOf("cam"));
    EXPECT_EQ(clock().sleeps().size(), 2u);
}

TEST_F(CameraEnumerationTest, AnAddedDeviceIsLoggedByTheWatchersId) {
    startScripted(groups(group("cam", 16, "W ä")));
    EXPECT_EQ(watcher->added(deviceWithId("W ä")), winrt::result::ok);
    EXPECT_EQ(linesOf("INFO"), Lines{"Device added: W ä"});
    EXPECT_EQ(lines().back(), "INFO Device added: W ä");
    EXPECT_EQ(uids(), Lines{"cam"});
}

TEST_F(CameraEnumerationTest, ADeviceWithoutAColourSourceIsNeitherKeptNorLogged) {
    startScripted(R"("groups": [{"id": "W", "sources": [{"id": "I", "kind": "Infrared", "device": {"id": "cam"}}]}])");
    EXPECT_EQ(watcher->added(deviceWithId("W")), winrt::result::ok);
    EXPECT_TRUE(uids().empty());
    EXPECT_TRUE(linesOf("INFO").empty());
}

TEST_F(CameraEnumerationTest, OfTwoSourcesOfOneUidTheLaterStays) {
    startScripted(R"("groups": [{"id": "W", "sources": [
        {"id": "S", "device": {"id": "cam"}, "profiles": [{"width": 16, "height": 12}]},
        {"id": "T", "device": {"id": "cam"}, "profiles": [{"width": 1, "height": 1}, {"width": 8, "height": 6}]}]}])");
    watcher->added(deviceWithId("W"));
    ASSERT_EQ(uids(), Lines{"cam"});
    EXPECT_EQ(description("cam").resolutionX, 8);
    EXPECT_EQ(enumeration->getCameras().at("cam").profileIndex, 1);
    EXPECT_EQ(linesOf("INFO").size(), 1u);
}

TEST_F(CameraEnumerationTest, ASourceThatFailsLeavesThoseBeforeItInTheMap) {
    startScripted(R"("groups": [{"id": "W", "sources": [
        {"id": "S", "device": {"id": "cam"}, "profiles": [{"width": 16, "height": 12}]},
        {"id": "T", "device": {"id": "bare"}, "profiles": []}]}])");
    watcher->added(deviceWithId("W"));
    EXPECT_EQ(uids(), Lines{"cam"});
    EXPECT_EQ(lines().back(), "INFO Device added: W");
}

TEST_F(CameraEnumerationTest, AKnownUidThatIsAddedAgainIsReplacedWhole) {
    useScenario(groups(group("cam", 16, "W")));
    start();
    ASSERT_TRUE(waitForUids({"cam"}));
    const auto before = enumeration->getCameras().at("cam");
    changeScenario(groups(group("cam", 32, "X"))); // another watched device: the removal of "W" finds no such uid
    ASSERT_TRUE(waitUntil([&] { return description("cam").resolutionX == 32; }));
    EXPECT_NE(enumeration->getCameras().at("cam").deviceInformation, before.deviceInformation);
    EXPECT_EQ(before.description.resolutionX, 16) << "a copy stays as it was";
}

TEST_F(CameraEnumerationTest, ACameraThatIsUnpluggedGoesAndComesBackUnderItsUid) {
    useScenario(groups(group("cam") + ", " + group("dog")));
    start();
    ASSERT_TRUE(waitForUids({"cam", "dog"}));
    changeScenario(groups(group("dog")));
    ASSERT_TRUE(waitForUids({"dog"}));
    ASSERT_TRUE(waitForLine("INFO Device removed: cam"));
    log().clear();
    changeScenario(groups(group("cam", 24) + ", " + group("dog")));
    ASSERT_TRUE(waitForUids({"cam", "dog"}));
    EXPECT_TRUE(waitForLine("INFO Device added: cam"));
    EXPECT_EQ(description("cam").resolutionX, 24);
}

TEST_F(CameraEnumerationTest, ARemovedDeviceIsErasedByItsIdAndLogged) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    log().clear();
    EXPECT_EQ(watcher->removed(updateOf("cam")), winrt::result::ok);
    EXPECT_TRUE(uids().empty());
    EXPECT_EQ(lines(), Lines{"INFO Device removed: cam"});
}

TEST_F(CameraEnumerationTest, AnUnknownRemovedDeviceIsLoggedAndChangesNothing) {
    startScripted(groups(group("cam", 16, "W")));
    watcher->added(deviceWithId("W"));
    log().clear();
    EXPECT_EQ(watcher->removed(updateOf("W")), winrt::result::ok) << "the watcher's device, not the source's";
    EXPECT_EQ(lines(), Lines{"INFO Device removed: W"});
    EXPECT_EQ(uids(), Lines{"cam"});
}

TEST_F(CameraEnumerationTest, AnUnknownUpdatedDeviceDoesNothingAndLogsNothing) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    log().clear();
    EXPECT_EQ(watcher->updated(updateOf("CAM", {{u"new", std::u16string(u"1")}})), winrt::result::ok);
    EXPECT_TRUE(log().records().empty());
    EXPECT_EQ(uids(), Lines{"cam"});
    EXPECT_EQ(enumeration->getCameras().at("cam").deviceInformation->Properties().Size(), 0u);
}

TEST_F(CameraEnumerationTest, AnUpdateReachesTheDeviceAndNothingElseOfTheRecord) {
    const std::string node =
        R"(, "deviceNodes": [{"id": "node", "properties": {"System.Devices.DeviceManufacturer": "A"}}])";
    const std::string properties = R"(, "properties": {"System.Devices.DeviceInstanceId": "node"})";
    startScripted(groups(group("cam", 16, "", properties)) + node);
    watcher->added(deviceWithId("cam"));
    const auto before = enumeration->getCameras().at("cam");
    ASSERT_EQ(before.description.make, "A");
    log().clear();
    EXPECT_EQ(watcher->updated(updateOf("cam", {{u"System.ItemNameDisplay", std::u16string(u"renamed")},
                                                {u"System.Devices.DeviceInstanceId", std::u16string(u"other")},
                                                {u"System.Devices.ModelName", std::u16string(u"other")}})),
              winrt::result::ok);
    const auto after = enumeration->getCameras().at("cam");
    EXPECT_EQ(after.deviceInformation, before.deviceInformation);
    EXPECT_EQ(Platform::unboxString(after.deviceInformation->Properties().Lookup(u"System.Devices.DeviceInstanceId")),
              u"other");
    EXPECT_EQ(after.description.name, "Camera");
    EXPECT_EQ(after.description.make, "A");
    EXPECT_EQ(after.description.model, "");
    EXPECT_EQ(after.description.resolutionX, 16);
    EXPECT_TRUE(log().records().empty());
}

TEST_F(CameraEnumerationTest, AChangedDeviceOfThePlatformKeepsItsRecord) {
    useScenario(groups(group("cam")));
    start();
    ASSERT_TRUE(waitForUids({"cam"}));
    changeScenario(groups(group("cam", 99, "", R"(, "properties": {"new": "1"})") + ", " + group("mark")));
    ASSERT_TRUE(journal().waitForCall("DeviceWatcher.Updated"));
    ASSERT_TRUE(waitForUids({"cam", "mark"}));
    EXPECT_EQ(description("cam").resolutionX, 16);
}

TEST_F(CameraEnumerationTest, ARemovalDuringTheDelayDoesNotKeepTheRecordOut) {
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

TEST_F(CameraEnumerationTest, ARemovalDuringTheOpeningDoesNotKeepTheRecordOut) {
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

TEST_F(CameraEnumerationTest, TheEndOfTheFirstEnumerationAndOfTheWatcherMeanNothing) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    log().clear();
    EXPECT_EQ(watcher->enumerationCompleted(), winrt::result::ok);
    EXPECT_EQ(watcher->stopped(), winrt::result::ok);
    EXPECT_TRUE(log().records().empty());
    EXPECT_EQ(uids(), Lines{"cam"});
    EXPECT_TRUE(enumeration->isWatcherStarted());
}

TEST_F(CameraEnumerationTest, AFailureToWatchIsLoggedAndTheMapStaysEmpty) {
    for (const std::string operation :
         {"MediaFrameSourceGroup.GetDeviceSelector", "DeviceInformation.CreateWatcher", "DeviceWatcher.Start"}) {
        useScenario(groups(group("cam")) + R"(, "faults": {")" + operation +
                    R"(": {"message": "Kein Gerät.", "code": -1, "times": 1}})");
        log().clear();
        start();
        EXPECT_EQ(lines(), Lines{"ERROR CameraEnumeration: could not create watcher - Kein Gerät."}) << operation;
        EXPECT_EQ(calls().back(), operation) << "and nothing is tried again";
        EXPECT_FALSE(enumeration->isWatcherStarted()) << operation;
        EXPECT_TRUE(uids().empty()) << operation;
    }
}

TEST_F(CameraEnumerationTest, APlatformThatCannotBeMadeIsAFailureToWatch) {
    Platform::setCameraPlatformFactory([]() -> std::shared_ptr<Platform::CameraPlatform> { throw deviceLost; });
    start();
    EXPECT_EQ(lines(), Lines{"ERROR CameraEnumeration: could not create watcher - lost"});
    EXPECT_FALSE(enumeration->isWatcherStarted());
}

TEST_F(CameraEnumerationTest, AnotherExceptionLeavesTheInitialisation) {
    AlteredPlatform::install()->selector = []() -> std::u16string { throw std::runtime_error("no platform error"); };
    EXPECT_THROW(start(), std::runtime_error);
    EXPECT_TRUE(lines().empty());
}

TEST_F(CameraEnumerationTest, AHandlerThatCannotReadAnIdReturnsTheErrorsCode) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    log().clear();
    EXPECT_EQ(watcher->removed(unreadable(deviceLost)), -77);
    EXPECT_EQ(watcher->updated(unreadable(deviceLost)), -77);
    EXPECT_TRUE(log().records().empty());
    EXPECT_EQ(uids(), Lines{"cam"}) << "the lock has been released";
}

TEST_F(CameraEnumerationTest, AnAddedDeviceWhoseIdCannotBeReadIsAFailedLookup) {
    startScripted(groups(group("cam")));
    EXPECT_EQ(watcher->added(unreadable(deviceLost)), winrt::result::ok);
    EXPECT_EQ(lines(), Lines{"ERROR lost -77"});
    EXPECT_TRUE(uids().empty());
}

TEST_F(CameraEnumerationTest, AnAddedDeviceWhoseIdFailsAtTheLogLineStaysInTheMap) {
    startScripted(groups(group("cam")));
    EXPECT_EQ(watcher->added(unreadable(deviceLost, 1)), -77);
    EXPECT_TRUE(linesOf("INFO").empty());
    EXPECT_TRUE(linesOf("ERROR").empty());
    EXPECT_EQ(uids(), Lines{"cam"});
}

TEST_F(CameraEnumerationTest, AnUpdateThatTheDeviceRefusesReturnsTheErrorsCode) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    EXPECT_EQ(watcher->updated(unreadable(deviceLost, 1)), -77);
    EXPECT_EQ(uids(), Lines{"cam"});
}

TEST_F(CameraEnumerationTest, NoOtherExceptionOfAHandlerReachesThePlatformsThreadEither) {
    startScripted(groups(group("cam")));
    const std::runtime_error error("no platform error");
    EXPECT_EQ(watcher->added(unreadable(error)), winrt::result::fail);
    EXPECT_EQ(watcher->updated(unreadable(error)), winrt::result::fail);
    EXPECT_EQ(watcher->removed(unreadable(error)), winrt::result::fail);
    EXPECT_TRUE(uids().empty());
}

TEST_F(CameraEnumerationTest, EventsAfterItsEndDoNothing) {
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

TEST_F(CameraEnumerationTest, TheHandlersHoldItOnlyWhileTheyRun) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    const std::weak_ptr<CameraEnumeration> weak = enumeration;
    EXPECT_EQ(weak.use_count(), 1);
    enumeration.reset();
    EXPECT_TRUE(weak.expired());
}

TEST_F(CameraEnumerationTest, ItMayEndWhileAHandlerSleeps) {
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

TEST_F(CameraEnumerationTest, ItsMapMayBeReadWhileCamerasComeAndGo) {
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

/// The reply to a client that asks for the cameras, as soon as there are any.
std::string discovered(PavoCameraClient& client) {
    std::string reply;
    waitUntil([&] {
        reply = client.messageHandler(R"({"id":1,"method":"camera:discover"})");
        return reply.find("\"uid\"") != std::string::npos;
    });
    return reply;
}

TEST_F(CameraEnumerationTest, AClientLearnsOfEmptyMakeAndModelAndNeverOfTheName) {
    useScenario(groups(group("cam")));
    PavoCameraClient client(-1, std::make_shared<CameraServer>());
    EXPECT_EQ(discovered(client),
              R"({"id":1,"jsonrpc":"2.0","result":[{"exposureMaxValueInUs":62500,"exposureMinValueInUs":62500,)"
              R"("make":"","model":"","resolutionX":16,"resolutionY":12,"uid":"cam"}]})"
              "\n");
}

TEST_F(CameraEnumerationTest, AClientThatAsksBeforeTheDelayIsOverSeesNoCamera) {
    useScenario(groups(group("cam")));
    const BlockedSleeps sleeps;
    PavoCameraClient client(-1, std::make_shared<CameraServer>());
    ASSERT_TRUE(sleeps.clock->waitForSleeper());
    EXPECT_EQ(client.messageHandler(R"({"id":1,"method":"camera:discover"})"),
              "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":[]}\n");
    sleeps.clock->release();
    EXPECT_NE(discovered(client).find(R"("uid":"cam")"), std::string::npos);
}

TEST_F(CameraEnumerationTest, AClientOfAHubThatCannotWatchSeesNoCamera) {
    for (const std::string operation : {"MediaFrameSourceGroup.GetDeviceSelector", "DeviceInformation.CreateWatcher"}) {
        useScenario(groups(group("cam")) + R"(, "faults": {")" + operation + R"(": {"message": "Broken."}})");
        log().clear();
        PavoCameraClient client(-1, std::make_shared<CameraServer>());
        EXPECT_EQ(linesOf("ERROR"), Lines{"CameraEnumeration: could not create watcher - Broken."});
        EXPECT_EQ(client.messageHandler(R"({"id":1,"method":"camera:discover"})"),
                  "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":[]}\n");
    }
}

} // namespace
