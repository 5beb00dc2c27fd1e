#include "Services/CameraHubWeb/Hub/HubAccess.h"

#include "Tests/Services/CameraHubWeb/Hub/Taker.h"

#include <gmock/gmock.h>

#include <atomic>
#include <new>
#include <set>
#include <thread>

namespace CameraHubWeb {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using Capture = StandInHub::Capture;

std::vector<std::string> uidsIn(const HubState& state) {
    std::vector<std::string> uids;
    for (const CameraHub::Camera& camera : state.cameras)
        uids.push_back(camera.uid);
    return uids;
}

TEST(HubAccessTest, AStillComesWithAllThatIsKnownOfIt) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    const auto before = std::chrono::system_clock::now();
    taker.take("desk", "a ticket", "somebody");
    const auto taken = std::get<TakenStill>(taker.result("a ticket"));
    EXPECT_EQ(taken.still.png, StandInHub::picture(1));
    EXPECT_EQ(taken.still.capture.exposure, 15625us);
    EXPECT_FALSE(taken.still.wasTakenTwice);
    EXPECT_EQ(taken.camera.uid, "desk");
    EXPECT_EQ(taken.camera.model, "C1");
    EXPECT_EQ(taken.request.capture.camera, "desk");
    EXPECT_EQ(taken.request.ticket, "a ticket");
    EXPECT_EQ(taken.request.origin, "somebody");
    EXPECT_EQ(taken.placeAtFirst, 0);
    EXPECT_GE(taken.takenAt, before);
    EXPECT_LE(taken.takenAt, std::chrono::system_clock::now());
    EXPECT_GT(taken.captureTime, 0us);
    EXPECT_GT(taken.fetchTime, 0us);
}

TEST(HubAccessTest, OneWhoCannotTakeTheAnswerCostsNobodyElseTheirs) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    TakeRequest request;
    request.capture.camera = "desk";
    taker.access().take(request, [](const TakeResult&) { throw std::bad_alloc(); });
    taker.take("desk", "the next");
    EXPECT_TRUE(std::holds_alternative<TakenStill>(taker.result("the next")));
}

TEST(HubAccessTest, TheHubAndItsCamerasAreToldAtTheStart) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(waitUntil([&] { return !taker.states().empty(); }));
    const HubState state = taker.states().front();
    EXPECT_TRUE(state.isReachable);
    EXPECT_EQ(state.version, "2.9");
    EXPECT_THAT(uidsIn(state), ElementsAre("desk", "door"));
    EXPECT_THAT(uidsIn(taker.access().state()), ElementsAre("desk", "door"));
}

TEST(HubAccessTest, CamerasThatComeAndGoAreTold) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(taker.waitUntilReachable());
    hub.setCameras({"desk", "door", "yard"});
    EXPECT_TRUE(waitUntil([&] { return taker.states().back().cameras.size() == 3; }));
    hub.setCameras({});
    EXPECT_TRUE(waitUntil([&] { return taker.states().back().cameras.empty(); }));
    EXPECT_EQ(taker.states().size(), 3);
}

TEST(HubAccessTest, NothingIsToldWhileNothingChanges) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(waitUntil([&] { return hub.discoveries() > 10; }));
    EXPECT_EQ(taker.states().size(), 1);
    EXPECT_EQ(hub.connectionsEver(), 1);
}

TEST(HubAccessTest, AnUnknownCameraIsRefusedAtOnceAndNotAskedFor) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    EXPECT_TRUE(taker.waitUntilReachable());
    taker.take("cellar");
    EXPECT_TRUE(taker.hasResult());
    EXPECT_TRUE(isFailure(taker.result(), TakeFailureKind::NoSuchCamera, "cellar"));
    EXPECT_THAT(hub.journal(), IsEmpty());
}

TEST(HubAccessTest, AnUnknownCameraIsRefusedAfterTheFirstLookToo) {
    StandInHub hub;
    for (int count = 0; count < 20; ++count)
        EXPECT_TRUE(isFailure(Taker(settingsFor(hub)).takeNow("cellar"), TakeFailureKind::NoSuchCamera, "cellar"));
    EXPECT_THAT(hub.journal(), IsEmpty());
}

TEST(HubAccessTest, WhatTheHubRefusesIsAFailureAndTheNextStillIsTakenOnTheSameConnection) {
    struct Case {
        Capture capture;
        TakeFailureKind kind;
        const char* text;
    };
    StandInHub hub;
    Taker taker(settingsFor(hub));
    for (const Case& each : {Case{Capture::Failed, TakeFailureKind::CameraFailed, "it burns"},
                             {Capture::WithoutImage, TakeFailureKind::CameraFailed, "Unknown capture error"},
                             {Capture::NotConnected, TakeFailureKind::NoSuchCamera, "Camera Disconnected"},
                             {Capture::Rejected, TakeFailureKind::HubUnusable, "Parse Error"}}) {
        hub.nextCaptures({each.capture});
        EXPECT_TRUE(isFailure(taker.takeNow("desk"), each.kind, each.text));
        EXPECT_TRUE(isTaken(taker.takeNow("desk")));
    }
    EXPECT_EQ(hub.connectionsEver(), 2); // one of them looks
}

TEST(HubAccessTest, WhatIsNoReplyOfAHubIsAFailureAndTheNextStillIsTaken) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    hub.nextCaptures({Capture::Garbage});
    EXPECT_TRUE(isFailure(taker.takeNow("desk"), TakeFailureKind::HubUnusable, "no hub"));
    EXPECT_TRUE(isTaken(taker.takeNow("desk")));
}

TEST(HubAccessTest, AStillWhoseImageIsGoneIsTakenOnceMore) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    hub.loseImages(1);
    const auto taken = std::get<TakenStill>(taker.takeNow("desk"));
    EXPECT_TRUE(taken.still.wasTakenTwice);
    EXPECT_EQ(taken.still.png, StandInHub::picture(2));
    EXPECT_THAT(hub.journal(), ElementsAre("capture desk", "fetch", "capture desk", "fetch"));
}

TEST(HubAccessTest, AnImageThatIsGoneTwiceIsAFailure) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    hub.loseImages(2);
    EXPECT_TRUE(isFailure(taker.takeNow("desk"), TakeFailureKind::CameraFailed, "no longer has the image"));
    EXPECT_EQ(hub.journal().size(), 4);
    EXPECT_TRUE(isTaken(taker.takeNow("desk")));
}

TEST(HubAccessTest, NoTwoCapturesAreUnderWayAtOnceHoweverManyAsk) {
    StandInHub hub;
    HubAccess access(settingsFor(hub), {});
    std::mutex mutex;
    std::multiset<std::vector<std::uint8_t>> pictures;
    const auto ask = [&](const std::string& uid) {
        for (int count = 0; count < 10; ++count)
            access.take({{uid}, uid, ""}, [&](TakeResult result) {
                const std::lock_guard lock(mutex);
                pictures.insert(std::get<TakenStill>(std::move(result)).still.png);
            });
    };
    std::vector<std::thread> threads;
    for (const char* uid : {"desk", "door", "desk"})
        threads.emplace_back(ask, uid);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(waitUntil([&] {
        const std::lock_guard lock(mutex);
        return pictures.size() == 30;
    }));
    EXPECT_FALSE(hub.hadTwoCapturesAtOnce());
    EXPECT_EQ(std::set(pictures.begin(), pictures.end()).size(), 30);
}

TEST(HubAccessTest, EachCameraHasAConnectionThatIsKept) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    for (const char* uid : {"desk", "door", "desk", "door"})
        EXPECT_TRUE(isTaken(taker.takeNow(uid)));
    EXPECT_EQ(hub.connections(), 3); // one of them looks
    EXPECT_EQ(hub.connectionsEver(), 3);
}

TEST(HubAccessTest, AConnectionThatIsIdleIsDropped) {
    StandInHub hub;
    HubAccess::Settings settings = settingsFor(hub);
    settings.idleTime = 10ms;
    Taker taker(settings);
    for (int count = 0; count < 3; ++count) {
        EXPECT_TRUE(isTaken(taker.takeNow("desk")));
        EXPECT_TRUE(waitUntil([&] { return hub.connections() == 1; }));
    }
    EXPECT_EQ(hub.connectionsEver(), 4);
}

TEST(HubAccessTest, TheFirstStillOfAConnectionOpensTheCamera) {
    StandInHub hub;
    Taker taker(settingsFor(hub));
    hub.holdCaptures();
    for (const TakeStep step : {TakeStep::Opening, TakeStep::Taking}) {
        taker.take("desk");
        EXPECT_TRUE(taker.waitForStep(step));
        EXPECT_TRUE(waitUntil([&] { return !taker.stepsTold().empty() && taker.stepsTold().back() == step; }));
        hub.allowCaptures(1);
        EXPECT_TRUE(isTaken(taker.result()));
        EXPECT_THAT(taker.access().queue(), IsEmpty());
    }
}

TEST(HubAccessTest, TimesThatNoClientTakesAreRefused) {
    const StandInHub hub;
    HubAccess::Settings settings = settingsFor(hub);
    for (const std::chrono::milliseconds time : {0ms, -1ms, std::chrono::milliseconds(25h)}) {
        settings.callTime = time;
        EXPECT_THROW(HubAccess(settings, {}), std::invalid_argument);
    }
}

} // namespace
} // namespace CameraHubWeb
