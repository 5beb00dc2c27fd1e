#include "Tests/Services/LarkspurWindowsCameraHub/CameraEnumerationFixture.h"

#include <optional>
#include <stdexcept>
#include <utility>

namespace {

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
    Platform::PropertyMap Properties() const override { throw _error; }
    void Update(const Platform::DeviceInformationUpdate&) override {}

private:
    const Error _error;
    mutable int _readable;
};

template <typename Error> std::shared_ptr<Unreadable<Error>> unreadable(Error error, int readable = 0) {
    return std::make_shared<Unreadable<Error>>(std::move(error), readable);
}

const winrt::hresult_error deviceLost(-77, u"lost");

class CameraEnumerationFailuresTest : public CameraEnumerationFixture {};

TEST_F(CameraEnumerationFailuresTest, AFailureToWatchIsLoggedAndTheMapStaysEmpty) {
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

TEST_F(CameraEnumerationFailuresTest, APlatformThatCannotBeMadeIsAFailureToWatch) {
    Platform::setCameraPlatformFactory([]() -> std::shared_ptr<Platform::CameraPlatform> { throw deviceLost; });
    start();
    EXPECT_EQ(lines(), Lines{"ERROR CameraEnumeration: could not create watcher - lost"});
    EXPECT_FALSE(enumeration->isWatcherStarted());
}

TEST_F(CameraEnumerationFailuresTest, AnotherExceptionLeavesTheInitialisation) {
    AlteredPlatform::install()->selector = []() -> std::u16string { throw std::runtime_error("no platform error"); };
    EXPECT_THROW(start(), std::runtime_error);
    EXPECT_TRUE(lines().empty());
}

TEST_F(CameraEnumerationFailuresTest, AHandlerThatCannotReadAnIdReturnsTheErrorsCode) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    log().clear();
    EXPECT_EQ(watcher->removed(unreadable(deviceLost)), -77);
    EXPECT_EQ(watcher->updated(unreadable(deviceLost)), -77);
    EXPECT_TRUE(log().records().empty());
    EXPECT_EQ(uids(), Lines{"cam"}) << "the lock has been released";
}

TEST_F(CameraEnumerationFailuresTest, AnAddedDeviceWhoseIdCannotBeReadIsAFailedLookup) {
    startScripted(groups(group("cam")));
    EXPECT_EQ(watcher->added(unreadable(deviceLost)), winrt::result::ok);
    EXPECT_EQ(lines(), Lines{"ERROR lost -77"});
    EXPECT_TRUE(uids().empty());
}

TEST_F(CameraEnumerationFailuresTest, AnAddedDeviceWhoseIdFailsAtTheLogLineStaysInTheMap) {
    startScripted(groups(group("cam")));
    EXPECT_EQ(watcher->added(unreadable(deviceLost, 1)), -77);
    EXPECT_TRUE(linesOf("INFO").empty());
    EXPECT_TRUE(linesOf("ERROR").empty());
    EXPECT_EQ(uids(), Lines{"cam"});
}

TEST_F(CameraEnumerationFailuresTest, AnUpdateThatTheDeviceRefusesReturnsTheErrorsCode) {
    startScripted(groups(group("cam")));
    watcher->added(deviceWithId("cam"));
    EXPECT_EQ(watcher->updated(unreadable(deviceLost, 1)), -77);
    EXPECT_EQ(uids(), Lines{"cam"});
}

TEST_F(CameraEnumerationFailuresTest, NoOtherExceptionOfAHandlerReachesThePlatformsThreadEither) {
    startScripted(groups(group("cam")));
    const std::runtime_error error("no platform error");
    EXPECT_EQ(watcher->added(unreadable(error)), winrt::result::fail);
    EXPECT_EQ(watcher->updated(unreadable(error)), winrt::result::fail);
    EXPECT_EQ(watcher->removed(unreadable(error)), winrt::result::fail);
    EXPECT_TRUE(uids().empty());
}

TEST_F(CameraEnumerationFailuresTest, AClientOfAHubThatCannotWatchSeesNoCamera) {
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
