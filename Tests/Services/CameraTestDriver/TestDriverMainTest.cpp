#include "Services/CameraTestDriver/TestDriverMain.h"

#include "Services/CameraTestDriver/Images.h"
#include "Tests/Services/CameraTestDriver/BarrenPlatform.h"
#include "Tests/Services/CameraTestDriver/DriverFixture.h"
#include "Tests/Support/ChildProcess.h"

#include <sys/mount.h>

#include <fstream>
#include <stdexcept>

namespace {

class TestDriverMainTest : public DriverFixture {
protected:
    /// As much as the driver writes within that many bytes, when it goes on for ever.
    static std::string endlessSession(const std::string& typed, std::size_t limit = 100'000) {
        TypedConsole console(typed, limit);
        EXPECT_THROW(testDriverMain(console), ConsoleFull);
        return console.text();
    }

    static std::string repeated(const std::string& beginning, const std::string& text, std::size_t size) {
        std::string whole = beginning;
        while (whole.size() < size)
            whole += text;
        return whole.substr(0, size);
    }
};

const std::string greeting = "Windows Camera Test Driver \n"
                             "Type 0 for help\n";
const std::string mainHelp = "Main> You may..\n"
                             "1. List Available Cameras\n"
                             "2. Connect to a listed Camera \n"
                             "3. Connect to a known camera \n"
                             "4. List Connected Cameras\n"
                             "5. Act on Connected Cameras.\n"
                             "6. Exit App.\n"
                             "\n";

TEST_F(TestDriverMainTest, GreetsAndLeaves) { EXPECT_EQ(session("6\n"), greeting + "Main> "); }

TEST_F(TestDriverMainTest, AWholeSession) {
    useScenario(R"("groups": [)" + cameraGroup("cam", cameraName(), 320, 240) + R"(],
        "cameras": {"cam": {"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "value": -6},
                            "whiteBalance": {"supported": true}}})");
    EXPECT_EQ(session("1\n2\n0\n5\n0\n1\n1\n0\n1\n2\n10\n10\n11\n12\n1\n11\n14\n4\n6\n"),
              greeting + "Main> Found Source Group. Display Name: Group of cam Id: cam group\n"
                         "  SourceInfo.  Id: cam source StreamType: VideoPreview\n"
                         "  profileId:  SourceKind: Color\n"
                         "    DeviceInfo. Id: cam DeviceInfoKind: 1\n"
                         "    Device Name: Test Camera\n"
                         "Found these.. \n"
                         "0.\n"
                         "Test Camera::\n"
                         "320x240\n"
                         "cam:1\n"
                         "\n"
                         "Main> \n"
                         "Connect to Camera..\n"
                         "Which?> Ok, it's connected now.. Well done! \n"
                         "Main> Work with connected cam..\n"
                         "Which?> ActOnCamera> Converge camera settings..\n"
                         "Exposure?> \n"
                         "Focus?> \n"
                         "WhiteBalance?> \n"
                         "\n"
                         "Turning on a preview stream to converge: [exposure] [WB] \n"
                         "Turn auto settings on or off..\n"
                         "Auto Exposure:  on \n"
                         "No focus control supported\n"
                         "Auto WB:  on \n"
                         "Converging..\n"
                         "Done... turn off auto settings for future captures..\n"
                         "Auto Exposure:  off \n"
                         "Auto WB:  off \n"
                         "ActOnCamera> Exposure range: [-13.000000 , 0.000000\n"
                         "Exposure set to: -5.000000. Latched to: -5.000000\n"
                         "ActOnCamera> Capturing..\n"
                         "Auto Exposure:  off \n"
                         "Exposure time: -5.000000\n"
                         "WB auto: 0\n"
                         "Camera Stream State: 0\n"
                         "Received Picture Id: {1}\n"
                         "ActOnCamera> Capturing..\n"
                         "Auto Exposure:  off \n"
                         "Exposure time: -5.000000\n"
                         "WB auto: 0\n"
                         "Camera Stream State: 0\n"
                         "Received Picture Id: {2}\n"
                         "ActOnCamera> Available photos..\n"
                         "1: {1}\n"
                         "2: {2}\n"
                         "ActOnCamera> Save an image..\n"
                         "Which?> \n"
                         "Returning image {1}\n"
                         "Saved image to:\n"
                         " FOLDER/Test Camera/0-{1}.png\n"
                         "ActOnCamera> Available photos..\n"
                         "1: {2}\n"
                         "ActOnCamera> Main> Connected cams..\n"
                         "0: \n"
                         "Test Camera::\n"
                         "320x240\n"
                         "cam:1\n"
                         "\n"
                         "Main> ");
    EXPECT_EQ(imageIds().size(), 1U) << "the list outlives the driver";
}

TEST_F(TestDriverMainTest, APlatformFailureInTheMainMenuEndsIt) {
    useScenario(R"("groups": [], "faults": {"MediaFrameSourceGroup.FindAllAsync":
                    {"message": "Keine Kameras für Sie.", "code": -2147024891}})");
    EXPECT_EQ(session("1\n0\n"), greeting + "Main> Keine Kameras für Sie. -2147024891\n");
}

TEST_F(TestDriverMainTest, APlatformFailureInTheCameraMenuEndsIt) {
    useCamera(R"({"isoSpeedControl": {"supported": true},
                  "faults": {"IsoSpeedControl.SetValueAsync": {"message": "It broke.", "code": -7}}})");
    const std::string text = session("1 2 0 5 0 8 0");
    EXPECT_EQ(text.substr(text.rfind("Which?> ")), "Which?> ActOnCamera> It broke. -7\n");
}

TEST_F(TestDriverMainTest, ACameraThatIsNotOpenEndsItAtTheFirstUse) {
    useScenario(R"("groups": [])");
    const std::string text = session("3 nowhere 1 5 0 2");
    EXPECT_EQ(text.rfind(greeting + "Main> Connect known..\n"
                                    "ID?>\n"
                                    "Kind?>\n"
                                    "Ok, it's connected now.. Well done! \n"
                                    "Main> Work with connected cam..\n"
                                    "Which?> ActOnCamera> ",
                         0),
              0U)
        << text;
    EXPECT_TRUE(std::filesystem::remove(executableFolder() / "Reloaded")) << "the folder of a camera typed in";
}

TEST_F(TestDriverMainTest, AFolderThatCannotBeMadeEndsItWithThePlatformsMessage) {
    useScenario(R"("groups": [)" + cameraGroup("cam", cameraName()) + "]");
    std::ofstream(outputFolder()) << "a file in its place";
    const std::string text = session("1 2 0 5 0 14 6");
    const std::string end = text.substr(text.rfind("Which?> "));
    EXPECT_EQ(end, "Which?> mkdir on FOLDER/Test Camera: File exists -2147467259\n");
}

TEST_F(TestDriverMainTest, AFolderThatCannotBeWrittenEndsItWithThePlatformsMessage) {
    std::filesystem::create_directory(outputFolder());
    runInPrivateMounts([&] {
        ASSERT_TRUE(mountMemory(outputFolder(), 1 << 20));
        ASSERT_EQ(mount(nullptr, outputFolder().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        useScenario(R"("groups": [)" + cameraGroup("cam", cameraName()) + "]");
        const std::string text = session("1 2 0 5 0 10 12 1 14 6");
        EXPECT_EQ(text.substr(text.rfind("Which?> ")),
                  "Which?> \n"
                  "Returning image {1}\n"
                  "open on FOLDER/Test Camera/0-{1}.png: Read-only file system -2147467259\n");
    });
}

TEST_F(TestDriverMainTest, APictureOfAnotherCameraEndsItWithThePlatformsMessage) {
    useScenario(R"("groups": [)" + cameraGroup("cam", cameraName()) + "]");
    const std::string text = session("1 2 0 2 0 5 0 10 14 5 1 12 1 6");
    const std::string end = text.substr(text.rfind("Which?> "));
    EXPECT_EQ(end, "Which?> \n"
                   "This camera does not have image {1}\n"
                   "Convert: there is no bitmap -2147024809\n");
    EXPECT_EQ(filesIn(outputFolder()).size(), 1U) << "an empty file";
}

TEST_F(TestDriverMainTest, APlatformThatCannotBeMadeEndsIt) {
    Platform::setCameraPlatformFactory(
        []() -> std::shared_ptr<Platform::CameraPlatform> { throw winrt::hresult_error(-4, u"No platform."); });
    EXPECT_EQ(session("1"), greeting + "Main> No platform. -4\n");
}

TEST_F(TestDriverMainTest, AnyOtherExceptionGoesToTheCaller) {
    Platform::setCameraPlatformFactory(
        []() -> std::shared_ptr<Platform::CameraPlatform> { throw std::runtime_error("another"); });
    TypedConsole console("1");
    EXPECT_THROW(testDriverMain(console), std::runtime_error);
}

TEST_F(TestDriverMainTest, TextInPlaceOfANumberGivesTheHelpOnceAndThenTheSameLineWithoutEnd) {
    const std::string text = endlessSession("list\n6\n");
    EXPECT_EQ(text, repeated(greeting + mainHelp, "Main> We don't actually have anything implemented for that\n",
                             text.size()));
    EXPECT_EQ(text.size(), 100'000U);
}

TEST_F(TestDriverMainTest, TheEndOfTheInputRepeatsTheSameLineWithoutEnd) {
    const std::string text = endlessSession("");
    EXPECT_EQ(text, repeated(greeting, "Main> We don't actually have anything implemented for that\n", text.size()));
}

TEST_F(TestDriverMainTest, TextInPlaceOfACommandRepeatsTheCameraMenuWithoutEnd) {
    useCamera("{}");
    const std::string text = endlessSession("1 2 0 5 0 up", 10'000);
    const std::string beginning = text.substr(0, text.find("ActOnCamera> "));
    const std::string help = "ActOnCamera> You may..\n"
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
                             "14. Put down the camera\n";
    EXPECT_EQ(text,
              repeated(beginning + help, "ActOnCamera> We don't actually have that implemented.. \n", text.size()));
}

TEST_F(TestDriverMainTest, LeavingReleasesTheCamerasAndClosesNone) {
    std::vector<std::weak_ptr<UntouchedCapture>> captures;
    const auto makeCapture = [&captures] {
        const auto capture = std::make_shared<testing::StrictMock<UntouchedCapture>>(); // no call, not even Close
        captures.push_back(capture);
        return capture;
    };
    Platform::setCameraPlatformFactory([&] { return std::make_shared<BarrenPlatform>(makeCapture); });
    session("3 a 1 3 b 1 6");
    ASSERT_EQ(captures.size(), 2U);
    EXPECT_TRUE(captures[0].expired());
    EXPECT_TRUE(captures[1].expired());
}

} // namespace
