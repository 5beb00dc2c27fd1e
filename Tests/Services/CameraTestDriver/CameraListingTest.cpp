#include "Services/CameraTestDriver/CameraListing.h"

#include "Platform/Interface/CameraPlatform.h"
#include "Tests/Services/CameraTestDriver/DriverFixture.h"

namespace {

using Texts = std::vector<std::string>;

class CameraListingTest : public DriverFixture {
protected:
    std::string list() {
        TypedConsole console;
        listAvailableCameras(console, context);
        return console.text();
    }

    DriverContext context;
};

TEST_F(CameraListingTest, TellsOfEveryGroupSourceAndDevice) {
    useScenario(R"("groups": [
      {"id": "group 1", "displayName": "Built-in é", "sources": [
        {"id": "infrared", "streamType": "VideoRecord", "kind": "Infrared", "profileId": "p1", "device": {"id": "a"}},
        {"id": "colour", "streamType": "Photo", "profileId": "p2", "device": {"id": "b", "name": "Camera é",
         "enclosure": {"panel": 1, "inDock": false, "inLid": true}}, "profiles": [{"width": 640, "height": 480}]}]},
      {"id": "group 2", "displayName": "", "sources": []},
      {"id": "group 3", "displayName": "Microphone and camera", "sources": [
        {"id": "sound", "streamType": "Audio", "kind": "Audio", "device": {"id": "c"}},
        {"id": "video", "streamType": "VideoRecord", "device": {"id": "d", "name": "D", "kind": 3},
         "profiles": [{"width": 320, "height": 240}]}]}])");
    EXPECT_EQ(list(), "Found Source Group. Display Name: Built-in é Id: group 1\n"
                      "  SourceInfo.  Id: infrared StreamType: VideoRecord\n"
                      "  profileId: p1 SourceKind: Infrared\n"
                      "Skipping non colour-visual media\n"
                      "  SourceInfo.  Id: colour StreamType: Photo\n"
                      "  profileId: p2 SourceKind: Color\n"
                      "    DeviceInfo. Id: b DeviceInfoKind: 1\n"
                      "    Device Name: Camera é\n"
                      "    LocationPanel: Front inDock: 0 inLid: 1\n"
                      "Found Source Group. Display Name:  Id: group 2\n"
                      "Found Source Group. Display Name: Microphone and camera Id: group 3\n"
                      "  SourceInfo.  Id: sound StreamType: Audio\n"
                      "  profileId:  SourceKind: Audio\n"
                      "Skipping non colour-visual media\n"
                      "  SourceInfo.  Id: video StreamType: VideoRecord\n"
                      "  profileId:  SourceKind: Color\n"
                      "    DeviceInfo. Id: d DeviceInfoKind: 3\n"
                      "    Device Name: D\n");
    ASSERT_EQ(context.availableCameras.size(), 2U);
    EXPECT_EQ(context.availableCameras[0].id, u"b");
    EXPECT_EQ(context.availableCameras[1].id, u"d");
    EXPECT_EQ(context.availableCameras[1].kind, 3);
}

TEST_F(CameraListingTest, APanelIsToldByItsName) {
    const Texts names{"Unknown", "Front", "Back", "Top", "Bottom", "Left", "Right"};
    for (std::size_t panel = 0; panel < names.size(); ++panel) {
        useScenario(R"("groups": [{"id": "g", "sources": [{"id": "s", "profiles": [{"width": 2, "height": 2}],
            "device": {"id": "d", "enclosure": {"panel": )" +
                    std::to_string(panel) + R"(, "inDock": true, "inLid": false}}}]}])");
        EXPECT_NE(list().find("    LocationPanel: " + names[panel] + " inDock: 1 inLid: 0\n"), std::string::npos);
    }
}

TEST_F(CameraListingTest, ANumberWithoutANameIsToldAsNothing) {
    useScenario(R"("groups": [{"id": "g", "sources": [
        {"id": "s", "streamType": 9, "kind": 8, "device": {"id": "d"}}]}])");
    EXPECT_EQ(list(), "Found Source Group. Display Name:  Id: g\n"
                      "  SourceInfo.  Id: s StreamType: \n"
                      "  profileId:  SourceKind: \n"
                      "Skipping non colour-visual media\n");
}

TEST_F(CameraListingTest, TheLargestPictureGivesTheSizeAndTheProfile) {
    useScenario(R"("groups": [{"id": "g", "sources": [{"id": "s", "device": {"id": "d"}, "profiles": [
        {"width": 640, "height": 480}, {"width": 1920, "height": 1080, "frameRate": 15},
        {"width": 1920, "height": 1080, "frameRate": 30}, {"width": 1280, "height": 720, "frameRate": 60}]}]}])");
    list();
    ASSERT_EQ(context.availableCameras.size(), 1U);
    EXPECT_EQ(context.availableCameras[0].width, 1920);
    EXPECT_EQ(context.availableCameras[0].height, 1080);
    EXPECT_EQ(context.availableCameras[0].profileIndex, 2);
}

TEST_F(CameraListingTest, MakeAndModelComeFromTheDeviceNodeAndTheContainer) {
    useScenario(R"("groups": [{"id": "g", "sources": [{"id": "s", "profiles": [{"width": 2, "height": 2}], "device":
        {"id": "d", "properties": {"System.Devices.DeviceInstanceId": "node",
         "System.Devices.ContainerId": "{0f8fad5b-d9cb-469f-a165-70867728950e}"}}}]}],
        "deviceNodes": [{"id": "node", "properties": {"System.Devices.DeviceManufacturer": "Maker é"}}],
        "containers": [{"id": "{0f8fad5b-d9cb-469f-a165-70867728950e}", "properties":
         {"System.Devices.ModelName": "Model é", "System.Devices.Manufacturer": "Another"}}])");
    list();
    ASSERT_EQ(context.availableCameras.size(), 1U);
    EXPECT_EQ(context.availableCameras[0].make, u"Maker é");
    EXPECT_EQ(context.availableCameras[0].model, u"Model é");
}

TEST_F(CameraListingTest, ASourceWithoutTheSecondInterfaceEndsTheListing) {
    useScenario(R"("groups": [)" + cameraGroup("first", "First") + ", " +
                cameraGroup("second", "Second", 64, 48, R"(, "sourceInfo2": false)") + ", " +
                cameraGroup("third", "Third") + "]");
    EXPECT_EQ(list(), "Found Source Group. Display Name: Group of first Id: first group\n"
                      "  SourceInfo.  Id: first source StreamType: VideoPreview\n"
                      "  profileId:  SourceKind: Color\n"
                      "    DeviceInfo. Id: first DeviceInfoKind: 1\n"
                      "    Device Name: First\n"
                      "Found Source Group. Display Name: Group of second Id: second group\n"
                      "Incorrect Windows Version; could not enumerate cameras\n");
    EXPECT_EQ(context.availableCameras.size(), 1U);
}

TEST_F(CameraListingTest, ASourceWithoutProfilesRaises) {
    useScenario(R"("groups": [{"id": "g", "sources": [{"id": "s", "device": {"id": "d"}}]}])");
    EXPECT_EQ(errorOf([&] { list(); }).code(), winrt::result::outOfBounds);
    EXPECT_TRUE(context.availableCameras.empty());
}

TEST_F(CameraListingTest, AFailureOfThePlatformGoesToTheCaller) {
    useScenario(R"("groups": [], "faults": {"MediaFrameSourceGroup.FindAllAsync": {"message": "No.", "code": -3}})");
    EXPECT_EQ(errorOf([&] { list(); }).code(), -3);
}

class ConnectCameraTest : public DriverFixture {
protected:
    static DriverCamera camera(const std::u16string& id, std::int32_t kind, std::int32_t profileIndex = -1) {
        DriverCamera camera;
        camera.id = id;
        camera.kind = kind;
        camera.profileIndex = profileIndex;
        return camera;
    }

    void useFormats(const std::string& streamType = "VideoPreview") {
        useScenario(R"("groups": [{"id": "g", "sources": [{"id": "s", "streamType": ")" + streamType +
                    R"(", "device": {"id": "d"}, "profiles":
            [{"width": 4, "height": 4}, {"width": 8, "height": 8}, {"width": 6, "height": 6}]}]}])");
    }
};

TEST_F(ConnectCameraTest, TheFirstSourceWithThatIdAndThatKindIsOpened) {
    const auto group = [](const std::string& id, const std::string& source, const std::string& device) {
        return R"({"id": ")" + id + R"(", "sources": [{"id": ")" + source + R"(", "device": )" + device +
               R"(, "profiles": [{"width": 2, "height": 2}]}]})";
    };
    useScenario(R"("groups": [)" + group("another id", "1", R"({"id": "D", "kind": 3})") + ", " +
                group("another kind", "2", R"({"id": "d"})") + ", " + group("right", "3", R"({"id": "d", "kind": 3})") +
                ", " + group("late", "4", R"({"id": "d", "kind": 3})") + "]");
    connectCamera(camera(u"d", 3));
    EXPECT_EQ(calls("MediaCapture.InitializeAsync"), Texts{R"(["right",1,2])"});
    EXPECT_EQ(calls("MediaFrameSource.SetFormatAsync"), Texts{R"(["3",0])"});
}

TEST_F(ConnectCameraTest, WithoutAMatchTheCaptureIsThereButNotOpen) {
    useFormats();
    const auto capture = connectCamera(camera(u"d", 2));
    ASSERT_TRUE(capture);
    EXPECT_EQ(calls("MediaCapture.InitializeAsync"), Texts{});
    errorOf([&] { capture->FrameSources(); });
}

TEST_F(ConnectCameraTest, ThePositionOfTheProfileIsUsedAsItIs) {
    useFormats();
    connectCamera(camera(u"d", 1, 2));
    EXPECT_EQ(calls("MediaFrameSource.SetFormatAsync"), Texts{R"(["s",2])"});
}

TEST_F(ConnectCameraTest, APositionThatIsNoneGivesTheLargestPicture) {
    useFormats();
    connectCamera(camera(u"d", 1, -1));
    connectCamera(camera(u"d", 1, 3));
    EXPECT_EQ(calls("MediaFrameSource.SetFormatAsync"), (Texts{R"(["s",1])", R"(["s",1])"}));
}

TEST_F(ConnectCameraTest, APhotoSourceTakesItsOwnPhotos) {
    useFormats("Photo");
    connectCamera(camera(u"d", 1));
    EXPECT_EQ(calls("MediaCapture.InitializeAsync"), Texts{R"(["g",0,2])"});
}

TEST_F(ConnectCameraTest, AFailureOfThePlatformGoesToTheCaller) {
    useCamera(R"({"faults": {"MediaCapture.InitializeAsync": {"message": "Busy.", "code": -2147024726}}})");
    EXPECT_EQ(errorOf([&] { connectCamera(camera(u"cam", 1)); }).code(), winrt::result::busy);
}

} // namespace
