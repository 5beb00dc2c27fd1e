#include "Services/CameraTestDriver/MainMenu.h"

#include "Services/CameraTestDriver/MenuState.h"
#include "Tests/Services/CameraTestDriver/BarrenPlatform.h"
#include "Tests/Services/CameraTestDriver/DriverFixture.h"

namespace {

using Texts = std::vector<std::string>;

class MainMenuTest : public DriverFixture {
protected:
    std::string run(const std::string& typed, int next = MainMenuState) {
        TypedConsole console(typed);
        EXPECT_EQ(runMainMenu(console, context), next);
        return console.text();
    }

    void useTwoCameras() {
        useScenario(R"("groups": [)" + cameraGroup("left", "Left", 640, 480) + ", " +
                    cameraGroup("right", "Right", 320, 240) + "]");
    }

    DriverContext context;
};

TEST_F(MainMenuTest, TheStatesHaveTheirNumbers) {
    EXPECT_EQ(MainMenuState, 0);
    EXPECT_EQ(CameraMenuState, 2);
    EXPECT_EQ(LeaveState, 3);
}

TEST_F(MainMenuTest, Help) {
    EXPECT_EQ(run("0"), "Main> You may..\n"
                        "1. List Available Cameras\n"
                        "2. Connect to a listed Camera \n"
                        "3. Connect to a known camera \n"
                        "4. List Connected Cameras\n"
                        "5. Act on Connected Cameras.\n"
                        "6. Exit App.\n"
                        "\n");
}

TEST_F(MainMenuTest, CamerasAreListedFrom0) {
    useTwoCameras();
    EXPECT_EQ(run("1"), "Main> Found Source Group. Display Name: Group of left Id: left group\n"
                        "  SourceInfo.  Id: left source StreamType: VideoPreview\n"
                        "  profileId:  SourceKind: Color\n"
                        "    DeviceInfo. Id: left DeviceInfoKind: 1\n"
                        "    Device Name: Left\n"
                        "Found Source Group. Display Name: Group of right Id: right group\n"
                        "  SourceInfo.  Id: right source StreamType: VideoPreview\n"
                        "  profileId:  SourceKind: Color\n"
                        "    DeviceInfo. Id: right DeviceInfoKind: 1\n"
                        "    Device Name: Right\n"
                        "Found these.. \n"
                        "0.\n"
                        "Left::\n"
                        "640x480\n"
                        "left:1\n"
                        "\n"
                        "1.\n"
                        "Right::\n"
                        "320x240\n"
                        "right:1\n"
                        "\n");
}

TEST_F(MainMenuTest, AListingReplacesTheOneBefore) {
    useTwoCameras();
    run("1");
    run("1");
    EXPECT_EQ(context.availableCameras.size(), 2U);
    useScenario(R"("groups": [])");
    EXPECT_EQ(run("1"), "Main> Found these.. \n");
    EXPECT_TRUE(context.availableCameras.empty());
}

TEST_F(MainMenuTest, ACameraIsPrintedWithMakeAndModel) {
    DriverCamera camera;
    camera.name = u"Name é";
    camera.make = u"Make";
    camera.model = u"Model";
    camera.width = 1920;
    camera.height = 1080;
    camera.id = u"the id";
    camera.kind = 3;
    TypedConsole console;
    printCamera(console, camera);
    EXPECT_EQ(console.text(), "Name é:Make:Model\n1920x1080\nthe id:3\n\n");
}

TEST_F(MainMenuTest, AListedCameraIsConnectedByItsNumber) {
    useTwoCameras();
    run("1");
    EXPECT_EQ(run("2 1"), "Main> \n"
                          "Connect to Camera..\n"
                          "Which?> Ok, it's connected now.. Well done! \n");
    ASSERT_EQ(context.connectedCameras.size(), 1U);
    EXPECT_EQ(context.connectedCameras[0].camera.id, u"right");
    EXPECT_EQ(context.connectedCameras[0].saveCounter, 0);
    EXPECT_EQ(context.connectedCameras[0].mediaCapture->FrameSources().Size(), 1U);
    EXPECT_EQ(context.selectedConnection, -1);
}

TEST_F(MainMenuTest, ANumberThatNoListedCameraHas) {
    useTwoCameras();
    const std::string refusal = "Main> \n"
                                "Connect to Camera..\n"
                                "Which?> We don't have that one, maybe try List Available Cameras\n";
    EXPECT_EQ(run("2 0"), refusal) << "nothing has been listed";
    run("1");
    EXPECT_EQ(run("2 2"), refusal);
    EXPECT_EQ(run("2 -1"), refusal);
    EXPECT_TRUE(context.connectedCameras.empty());
}

TEST_F(MainMenuTest, ACameraConnectedTwiceStandsInTheListTwice) {
    useTwoCameras();
    run("1");
    run("2 0");
    run("2 0");
    EXPECT_EQ(run("4"), "Main> Connected cams..\n"
                        "0: \n"
                        "Left::\n"
                        "640x480\n"
                        "left:1\n"
                        "\n"
                        "1: \n"
                        "Left::\n"
                        "640x480\n"
                        "left:1\n"
                        "\n");
}

TEST_F(MainMenuTest, AKnownCameraIsConnectedByIdAndKindWithoutAListing) {
    useTwoCameras();
    EXPECT_EQ(run("3 right 1"), "Main> Connect known..\n"
                                "ID?>\n"
                                "Kind?>\n"
                                "Ok, it's connected now.. Well done! \n");
    EXPECT_EQ(calls("MediaCapture.InitializeAsync"), Texts{R"(["right group",1,2])"});
    EXPECT_EQ(run("4"), "Main> Connected cams..\n"
                        "0: \n"
                        "Reloaded::\n"
                        "0x0\n"
                        "right:1\n"
                        "\n");
}

TEST_F(MainMenuTest, ACameraThatNothingMatchesIsTakenForConnected) {
    useTwoCameras();
    EXPECT_EQ(run("3 left 2"), "Main> Connect known..\n"
                               "ID?>\n"
                               "Kind?>\n"
                               "Ok, it's connected now.. Well done! \n");
    EXPECT_EQ(context.connectedCameras.size(), 1U);
    EXPECT_EQ(calls("MediaCapture.InitializeAsync"), Texts{});
}

TEST_F(MainMenuTest, OnlyANullCaptureIsAFailedConnection) {
    Platform::setCameraPlatformFactory([] { return std::make_shared<BarrenPlatform>([] { return nullptr; }); });
    context.availableCameras.emplace_back();
    EXPECT_EQ(run("2 0"), "Main> \n"
                          "Connect to Camera..\n"
                          "Which?> That failed :(\n");
    EXPECT_EQ(run("3 some-id 7"), "Main> Connect known..\n"
                                  "ID?>\n"
                                  "Kind?>\n"
                                  "Can't find camera with some-id:7\n");
    EXPECT_TRUE(context.connectedCameras.empty());
}

TEST_F(MainMenuTest, NoConnectedCameras) { EXPECT_EQ(run("4"), "Main> Connected cams..\n"); }

TEST_F(MainMenuTest, AConnectedCameraIsSelectedByItsNumber) {
    useTwoCameras();
    run("3 left 1");
    run("3 right 1");
    EXPECT_EQ(run("5 1", CameraMenuState), "Main> Work with connected cam..\nWhich?> ");
    EXPECT_EQ(context.selectedConnection, 1);
}

TEST_F(MainMenuTest, ANumberThatNoConnectedCameraHasLeavesTheSelection) {
    useTwoCameras();
    run("3 left 1");
    run("5 0", CameraMenuState);
    const std::string refusal = "Main> Work with connected cam..\n"
                                "Which?> We don't have a connected cam there, maybe try List Connected Cams\n";
    EXPECT_EQ(run("5 1"), refusal);
    EXPECT_EQ(run("5 -1"), refusal);
    EXPECT_EQ(context.selectedConnection, 0);
}

TEST_F(MainMenuTest, ExitIsTheStateThatLeaves) { EXPECT_EQ(run("6", LeaveState), "Main> "); }

TEST_F(MainMenuTest, AnUnknownNumberPromptsAgainWithinTheSameCall) {
    EXPECT_EQ(run("7 -1 6", LeaveState), "Main> We don't actually have anything implemented for that\n"
                                         "Main> We don't actually have anything implemented for that\n"
                                         "Main> ");
}

TEST_F(MainMenuTest, AFailureOfThePlatformGoesToTheCaller) {
    useScenario(R"("groups": [], "faults": {"MediaFrameSourceGroup.FindAllAsync": {"code": -3}})");
    TypedConsole console("1");
    EXPECT_EQ(errorOf([&] { runMainMenu(console, context); }).code(), -3);
}

} // namespace
