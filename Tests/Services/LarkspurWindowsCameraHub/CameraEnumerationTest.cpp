#include "Tests/Services/LarkspurWindowsCameraHub/CameraEnumerationFixture.h"

#include <set>

namespace {

class CameraEnumerationTest : public CameraEnumerationFixture {};

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

TEST_F(CameraEnumerationTest, HasAnotherRevisionWheneverTheMapHasChanged) {
    startScripted(groups(group("cam", 16) + ", " + group("other", 16)));
    std::vector<std::uint64_t> revisions{enumeration->revision()};
    const auto note = [&] { revisions.push_back(enumeration->revision()); };
    watcher->added(deviceWithId("cam"));
    note();
    watcher->added(deviceWithId("other"));
    note();
    watcher->added(deviceWithId("cam")); // again: another record
    note();
    watcher->removed(updateOf("cam"));
    note();
    EXPECT_EQ(std::set(revisions.begin(), revisions.end()).size(), revisions.size());
    watcher->updated(updateOf("other")); // which changes nothing in the record
    EXPECT_EQ(enumeration->revision(), revisions.back());
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

TEST_F(CameraEnumerationTest, AClientLearnsOfEmptyMakeAndModelAndNeverOfTheName) {
    useScenario(groups(group("cam")));
    PavoCameraClient client(-1, std::make_shared<CameraServer>());
    EXPECT_EQ(discovered(client),
              R"({"id":1,"jsonrpc":"2.0","result":[{"exposureMaxValueInUs":62500,"exposureMinValueInUs":62500,)"
              R"("make":"","model":"","resolutionX":16,"resolutionY":12,"uid":"cam"}]})"
              "\n");
}

} // namespace
