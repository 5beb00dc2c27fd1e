#include "Services/CameraHubWeb/Hub/HubAccess.h"
#include "Tests/Client/ScriptedServer.h"
#include "Tests/Services/CameraHubWeb/Hub/Taker.h"

#include <gmock/gmock.h>

namespace CameraHubWeb {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Capture = StandInHub::Capture;

TEST(HubAwayTest, AHubThatWasNeverThereIsNotWaitedFor) {
    StandInHub hub;
    hub.stop();
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(isFailure(taker.takeNow("desk"), TakeFailureKind::HubAway, "cannot connect"));
    EXPECT_FALSE(taker.access().state().isReachable);
    EXPECT_TRUE(taker.waitUntilReachable(false));
    EXPECT_EQ(taker.states().size(), 1);
}

TEST(HubAwayTest, AHubThatComesIsFound) {
    StandInHub hub;
    hub.stop();
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(taker.waitUntilReachable(false));
    hub.start();
    EXPECT_TRUE(taker.waitUntilReachable());
    EXPECT_EQ(taker.states().size(), 2);
    EXPECT_TRUE(isTaken(taker.takeNow("desk")));
}

TEST(HubAwayTest, AHubThatGoesIsToldAndItsCamerasAreKept) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(taker.waitUntilReachable());
    hub.stop();
    EXPECT_TRUE(taker.waitUntilReachable(false));
    const HubState state = taker.access().state();
    EXPECT_NE(state.detail, "");
    EXPECT_EQ(state.version, "2.9");
    EXPECT_EQ(state.cameras.size(), 2);
}

TEST(HubAwayTest, AHubThatHasGoneIsWaitedFor) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(isTaken(taker.takeNow("desk")));
    hub.stop();
    EXPECT_TRUE(taker.waitUntilReachable(false));
    taker.take("desk");
    EXPECT_TRUE(waitUntil([&] { return taker.isAtWork(); }));
    hub.start();
    EXPECT_TRUE(isTaken(taker.result()));
}

TEST(HubAwayTest, ACameraThatComesBackLaterThanItsHubIsWaitedFor) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(taker.waitUntilReachable());
    hub.stop();
    EXPECT_TRUE(taker.waitUntilReachable(false));
    hub.setCameras({});
    hub.start();
    EXPECT_TRUE(taker.waitUntilReachable());
    taker.take("desk");
    EXPECT_TRUE(waitUntil([&] { return taker.isAtWork(); }));
    taker.take("cellar", "never seen");
    EXPECT_TRUE(isFailure(taker.result("never seen"), TakeFailureKind::NoSuchCamera));
    hub.setCameras({"desk"});
    EXPECT_TRUE(isTaken(taker.result()));
    EXPECT_THAT(hub.journal(), ElementsAre("capture desk", "fetch"));
}

TEST(HubAwayTest, NeitherIsWaitedForLongerThanTheTimeForIt) {
    StandInHub hub;
    HubAccess::Settings settings = settingsFor(hub);
    settings.returnTime = 20ms;
    Taker taker(settings);
    EXPECT_TRUE(isTaken(taker.takeNow("desk")));
    hub.stop();
    EXPECT_TRUE(isFailure(taker.takeNow("desk"), TakeFailureKind::HubAway));
    EXPECT_TRUE(taker.waitUntilReachable(false));
    hub.setCameras({"door"});
    hub.start();
    EXPECT_TRUE(taker.waitUntilReachable());
    EXPECT_TRUE(isTaken(taker.takeNow("door")));
    EXPECT_TRUE(isFailure(taker.takeNow("desk"), TakeFailureKind::NoSuchCamera));
}

// The connections that were kept are dead, and nobody has noticed.
TEST(HubAwayTest, AHubThatWasRestartedBetweenTwoStillsTakesTheSecond) {
    StandInHub hub;
    HubAccess::Settings settings = settingsFor(hub);
    settings.lookEvery = 1h;
    Taker taker(settings);
    for (int count = 0; count < 3; ++count) {
        EXPECT_TRUE(isTaken(taker.takeNow("desk")));
        EXPECT_TRUE(isTaken(taker.takeNow("door")));
        hub.stop();
        hub.start();
    }
    EXPECT_EQ(hub.journal().size(), 12);
}

TEST(HubAwayTest, ACaptureThatEndsTheHubIsNotMadeAgain) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    for (const char* uid : {"desk", "door"}) { // with a connection that was kept, and with a new one
        EXPECT_TRUE(isTaken(taker.takeNow("desk")));
        hub.nextCaptures({Capture::EndsHub});
        const auto before = hub.journal().size();
        EXPECT_TRUE(isFailure(taker.takeNow(uid), TakeFailureKind::HubAway, "the hub has ended the connection"));
        hub.start();
        EXPECT_TRUE(isTaken(taker.takeNow(uid)));
        EXPECT_EQ(hub.journal().size(), before + 3); // one more capture and its fetch
    }
}

TEST(HubAwayTest, AHubThatHangsIsTimedOut) {
    StandInHub hub;
    HubAccess::Settings settings = settingsFor(hub);
    settings.callTime = 300ms;
    Taker taker(settings);
    EXPECT_TRUE(taker.waitUntilReachable());
    hub.nextCaptures({Capture::Unanswered});
    EXPECT_TRUE(isFailure(taker.takeNow("desk"), TakeFailureKind::HubTimeout, "no complete reply within 300 ms"));
    EXPECT_TRUE(taker.waitUntilReachable(false));
    EXPECT_TRUE(isFailure(taker.takeNow("desk"), TakeFailureKind::HubTimeout));
    hub.stop();
    hub.start();
    EXPECT_TRUE(taker.waitUntilReachable());
    EXPECT_TRUE(isTaken(taker.takeNow("desk")));
}

TEST(HubAwayTest, ALookThatWaitsForACaptureIsNoHubThatHangs) {
    StandInHub hub;
    HubAccess::Settings settings = settingsFor(hub);
    settings.callTime = 500ms;
    Taker taker(settings);
    EXPECT_TRUE(taker.waitUntilReachable());
    hub.holdCaptures();
    const int connections = hub.connectionsEver();
    taker.takeWithSettle("desk", 60s);
    // The connection of the capture, and that of another look.
    EXPECT_TRUE(waitUntil([&] { return hub.connectionsEver() >= connections + 2; }));
    EXPECT_TRUE(taker.access().state().isReachable);
    hub.allowCaptures(1);
    EXPECT_TRUE(isTaken(taker.result()));
    EXPECT_EQ(taker.states().size(), 1);
}

TEST(HubAwayTest, TheEndDoesNotWaitForAHubThatHangs) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    hub.nextCaptures({Capture::Unanswered});
    taker.take("desk", "at work");
    taker.take("desk", "waits");
    EXPECT_TRUE(taker.waitForStep(TakeStep::Opening));
    EXPECT_TRUE(waitUntil([&] { return hub.journal().size() == 1; }));
    taker.end();
    EXPECT_TRUE(isFailure(taker.result("at work"), TakeFailureKind::Ended));
    EXPECT_TRUE(isFailure(taker.result("waits"), TakeFailureKind::Ended));
}

TEST(HubAwayTest, TheEndDoesNotWaitForAHubThatIsAway) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(taker.waitUntilReachable());
    hub.stop();
    EXPECT_TRUE(taker.waitUntilReachable(false));
    taker.take("desk");
    EXPECT_TRUE(waitUntil([&] { return taker.isAtWork(); }));
    taker.end();
    EXPECT_TRUE(isFailure(taker.result(), TakeFailureKind::Ended));
}

TEST(HubAwayTest, AHubThatHasNotAnsweredTheFirstLookIsWaitedForAsLongAsACallMayTake) {
    ScriptedServer silent(std::string(1, '\0'));
    HubAccess::Settings settings;
    settings.address = {"127.0.0.1", silent.port(), silent.port()};
    settings.callTime = 50ms;
    Taker taker(settings);
    EXPECT_TRUE(isFailure(taker.takeNow("desk"), TakeFailureKind::HubTimeout));
}

TEST(HubAwayTest, WhatIsNoHubIsToldSo) {
    ScriptedServer other(std::string(1, '\0'));
    other.answer(std::string("<html>\0", 7), ScriptedServer::Then::End);
    HubAccess::Settings settings;
    settings.address = {"127.0.0.1", other.port(), other.port()};
    settings.lookEvery = 1h;
    Taker taker(settings);
    EXPECT_TRUE(isFailure(taker.takeNow("desk"), TakeFailureKind::HubUnusable, "no hub"));
    EXPECT_FALSE(taker.access().state().isReachable);
}

} // namespace
} // namespace CameraHubWeb
