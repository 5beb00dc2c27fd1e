#include "Services/CameraTestDriver/CameraMenu.h"

#include "Services/CameraTestDriver/Images.h"
#include "Services/CameraTestDriver/MenuState.h"
#include "Tests/Services/CameraTestDriver/DriverFixture.h"

namespace {

using Texts = std::vector<std::string>;

class CameraMenuTest : public DriverFixture {
protected:
    /// One camera of that hardware, connected and selected.
    void connect(const std::string& hardware = "{}") {
        useCamera(hardware);
        context.connectedCameras.push_back(connectionTo("cam", cameraName()));
        context.selectedConnection = 0;
    }

    std::string run(const std::string& typed, int next = CameraMenuState) {
        TypedConsole console(typed);
        EXPECT_EQ(runCameraMenu(console, context), next);
        return plain(console.text());
    }

    DriverContext context;
};

TEST_F(CameraMenuTest, WithoutASelectionItGoesBack) {
    EXPECT_EQ(run("0", MainMenuState), "There is not currently connected cam selected..\n");
    context.selectedConnection = 0;
    EXPECT_EQ(run("0", MainMenuState), "There is not currently connected cam selected..\n");
}

TEST_F(CameraMenuTest, Help) {
    connect();
    EXPECT_EQ(run("0"), "ActOnCamera> You may..\n"
                        "1. Converge camera settings\n"
                        "2. Adjust exposure up\n"
                        "3. Adjust exposure down\n"
                        "4. Adjust brightness up\n"
                        "5. Adjust brightness down \n"
                        "6. Adjust contrast up\n"
                        "7. Adjust contrast down\n"
                        "8. Adjust ISO up\n"
                        "9. Adjust ISO down\n"
                        "10. Capture an image with current settings\n"
                        "11. List available images\n"
                        "12. Save captured image\n"
                        "13. Print image\n"
                        "14. Put down the camera\n");
}

TEST_F(CameraMenuTest, ConvergingAsksForTheThreeFlags) {
    connect(R"({"exposure": {"supported": true}})");
    EXPECT_EQ(run("1 1 0 1"), "ActOnCamera> Converge camera settings..\n"
                              "Exposure?> \n"
                              "Focus?> \n"
                              "WhiteBalance?> \n"
                              "\n"
                              "Turning on a preview stream to converge: [exposure] [WB] \n"
                              "Turn auto settings on or off..\n"
                              "Auto Exposure:  on \n"
                              "No focus control supported\n"
                              "No white balance supported\n"
                              "Converging..\n"
                              "Done... turn off auto settings for future captures..\n"
                              "Auto Exposure:  off \n"
                              "No white balance supported\n");
}

TEST_F(CameraMenuTest, ConvergingNothingSaysNothingMore) {
    connect();
    EXPECT_EQ(run("1 0 0 0"), "ActOnCamera> Converge camera settings..\n"
                              "Exposure?> \n"
                              "Focus?> \n"
                              "WhiteBalance?> \n"
                              "\n");
}

TEST_F(CameraMenuTest, TheEightStepsGoTheirWay) {
    connect(R"({"exposure": {"supported": true, "min": -100, "max": 100, "step": 1},
                "brightness": {"supported": true, "min": -100, "max": 100, "step": 10},
                "contrast": {"supported": true, "min": -100, "max": 100, "step": 20},
                "isoSpeedControl": {"supported": true, "value": 400}})");
    for (const char* typed : {"2", "3", "4", "5", "6", "7", "8", "9"})
        run(typed);
    EXPECT_EQ(
        changes(),
        (Texts{"MediaDeviceControl.TrySetAuto Exposure[false]", "MediaDeviceControl.TrySetValue Exposure[1.0]",
               "MediaDeviceControl.TrySetAuto Exposure[false]", "MediaDeviceControl.TrySetValue Exposure[0.0]",
               "MediaDeviceControl.TrySetAuto Brightness[false]", "MediaDeviceControl.TrySetValue Brightness[10.0]",
               "MediaDeviceControl.TrySetAuto Brightness[false]", "MediaDeviceControl.TrySetValue Brightness[0.0]",
               "MediaDeviceControl.TrySetAuto Contrast[false]", "MediaDeviceControl.TrySetValue Contrast[20.0]",
               "MediaDeviceControl.TrySetAuto Contrast[false]", "MediaDeviceControl.TrySetValue Contrast[0.0]",
               "IsoSpeedControl.SetValueAsync [500]", "IsoSpeedControl.SetValueAsync [400]"}));
}

TEST_F(CameraMenuTest, ACaptureTellsTheStatusAndTheId) {
    connect(R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "value": -6}})");
    EXPECT_EQ(run("10"), "ActOnCamera> Capturing..\n"
                         "Auto Exposure:  off \n"
                         "Exposure time: -6.000000\n"
                         "Camera Stream State: 0\n"
                         "Received Picture Id: {1}\n");
    ASSERT_EQ(imageIds().size(), 1U);
    EXPECT_EQ(context.connectedCameras[0].images.count(imageIdToText(imageIds()[0])), 1U);
}

TEST_F(CameraMenuTest, AFailedCaptureAddsAnIdAllTheSame) {
    connect(R"({"faults": {"MediaCapture.CapturePhotoToStreamAsync": {"message": "No light.", "code": -9}}})");
    EXPECT_EQ(run("10"), "ActOnCamera> Capturing..\n"
                         "Camera Stream State: 0\n"
                         "No light. -9\n"
                         "Received Picture Id: {1}\n");
    EXPECT_EQ(imageIds().size(), 1U);
}

TEST_F(CameraMenuTest, PicturesAreListedFrom1) {
    connect();
    EXPECT_EQ(run("11"), "ActOnCamera> Available photos..\n");
    run("10");
    run("10");
    EXPECT_EQ(run("11"), "ActOnCamera> Available photos..\n"
                         "1: {1}\n"
                         "2: {2}\n");
}

TEST_F(CameraMenuTest, PicturesOfAllCamerasAreInOneList) {
    useScenario(R"("groups": [)" + cameraGroup("a", cameraName()) + ", " + cameraGroup("b", cameraName()) + "]");
    context.connectedCameras = {connectionTo("a", cameraName()), connectionTo("b", cameraName())};
    for (const std::int32_t camera : {0, 1}) {
        context.selectedConnection = camera;
        run("10");
    }
    EXPECT_EQ(run("11"), "ActOnCamera> Available photos..\n1: {1}\n2: {2}\n");
}

TEST_F(CameraMenuTest, APictureIsSavedIntoTheFolderOfTheCamera) {
    connect();
    run("10");
    EXPECT_EQ(run("12 1"), "ActOnCamera> Save an image..\n"
                           "Which?> \n"
                           "Returning image {1}\n"
                           "Saved image to:\n"
                           " FOLDER/Test Camera/0-{1}.png\n");
    EXPECT_EQ(filesIn(outputFolder()).size(), 1U);
    EXPECT_EQ(run("12 1"), "ActOnCamera> Save an image..\n"
                           "Which?> \n"
                           "We don't have image 1\n");
}

TEST_F(CameraMenuTest, ThereIsNoPrinting) {
    connect();
    EXPECT_EQ(run("13"), "ActOnCamera> ERROR: PC LOAD LETTER (0x80A4FFE7)\n");
}

TEST_F(CameraMenuTest, PuttingTheCameraDownGoesBackAndClosesNothing) {
    connect();
    EXPECT_EQ(run("14", MainMenuState), "ActOnCamera> ");
    ASSERT_EQ(context.connectedCameras.size(), 1U);
    EXPECT_EQ(context.connectedCameras[0].mediaCapture->FrameSources().Size(), 1U);
    EXPECT_EQ(calls("MediaCapture.Close"), Texts{});
}

TEST_F(CameraMenuTest, AnUnknownNumberPromptsAgainWithinTheSameCall) {
    connect();
    EXPECT_EQ(run("15 -1 14", MainMenuState), "ActOnCamera> We don't actually have that implemented.. \n"
                                              "ActOnCamera> We don't actually have that implemented.. \n"
                                              "ActOnCamera> ");
}

TEST_F(CameraMenuTest, EveryCommandOpensTheFolderAnew) {
    connect();
    run("0");
    EXPECT_TRUE(std::filesystem::remove(outputFolder()));
    run("0");
    EXPECT_TRUE(std::filesystem::is_directory(outputFolder()));
}

TEST_F(CameraMenuTest, ACameraWhoseNameGivesNoFolderRaisesBeforeThePrompt) {
    connect();
    context.connectedCameras[0].camera.name = u"..";
    TypedConsole console("0");
    EXPECT_EQ(errorOf([&] { runCameraMenu(console, context); }).code(), winrt::result::invalidArgument);
    EXPECT_EQ(console.text(), "");
}

} // namespace
