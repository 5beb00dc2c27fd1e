#include "Services/LarkspurWindowsCameraHub/ConnectedCameraMap.h"

#include "Tests/Services/LarkspurWindowsCameraHub/OneCamera.h"
#include "Tests/Support/WaitUntil.h"

#include <future>

namespace {

class ConnectedCameraMapTest : public OneCamera {
protected:
    ConnectedCameraMap map;
};

TEST_F(ConnectedCameraMapTest, ACameraIsOpenForAsLongAsSomebodyHoldsIt) {
    useScenario(oneCamera("{}"));
    EXPECT_EQ(map.find("D"), nullptr);
    auto camera = map.getOrCreate("D", found());
    EXPECT_EQ(map.find("D"), camera);
    EXPECT_EQ(camera.use_count(), 1) << "the map holds none";
    camera.reset();
    EXPECT_EQ(map.find("D"), nullptr);
    EXPECT_EQ(timesCalled("MediaCapture.Close"), 1u);
}

TEST_F(ConnectedCameraMapTest, ACameraThatIsOpenIsNotOpenedAgain) {
    useScenario(oneCamera("{}"));
    const auto camera = map.getOrCreate("D", found());
    EXPECT_EQ(map.getOrCreate("D", found()), camera);
    EXPECT_EQ(timesCalled("MediaCapture.InitializeAsync"), 1u);
}

TEST_F(ConnectedCameraMapTest, AnExpiredEntryIsOverwritten) {
    useScenario(oneCamera("{}"));
    map.getOrCreate("D", found()).reset();
    const auto camera = map.getOrCreate("D", found());
    EXPECT_EQ(map.find("D"), camera);
    EXPECT_EQ(timesCalled("MediaCapture.InitializeAsync"), 2u);
}

TEST_F(ConnectedCameraMapTest, CamerasHaveEntriesOfTheirOwn) {
    useScenario(severalCameras({"D", "E"}, "{}"));
    const auto first = map.getOrCreate("D", found("D"));
    const auto second = map.getOrCreate("E", found("E"));
    EXPECT_NE(first, second);
    EXPECT_EQ(map.find("D"), first);
    EXPECT_EQ(map.find("E"), second);
}

TEST_F(ConnectedCameraMapTest, WhoeverAsksWhileACameraIsBeingOpenedWaitsForItAndGetsIt) {
    for (const bool asksToOpen : {false, true}) {
        ConnectedCameraMap empty;
        useScenario(oneCamera(withFaults("{}", R"("MediaCapture.InitializeAsync": {"fails": false, "delayMs": 300})")));
        auto opening = std::async(std::launch::async, [&] { return empty.getOrCreate("D", found()); });
        ASSERT_TRUE(waitUntil([&] { return timesCalled("MediaCapture.InitializeAsync") == 1; }));
        const auto camera = asksToOpen ? empty.getOrCreate("D", found()) : empty.find("D");
        EXPECT_NE(camera, nullptr);
        EXPECT_EQ(camera, opening.get());
        EXPECT_EQ(timesCalled("MediaCapture.InitializeAsync"), 1u);
    }
}

TEST_F(ConnectedCameraMapTest, AFailureToOpenLeavesNoEntryAndNoLock) {
    useScenario(oneCamera(withFaults("{}", fault("MediaFrameReader.StartAsync", R"("times": 1)"))));
    EXPECT_EQ(errorOf([&] { map.getOrCreate("D", found()); }).code(), -7);
    EXPECT_EQ(map.find("D"), nullptr);
    EXPECT_NE(map.getOrCreate("D", found()), nullptr);
}

} // namespace
