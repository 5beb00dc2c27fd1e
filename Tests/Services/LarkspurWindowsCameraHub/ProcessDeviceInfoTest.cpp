#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"
#include "Tests/Support/AlteredPlatform.h"
#include "Tests/Support/SimulatedHub.h"

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace {

/// A colour source of the device "cam" in JSON, of 16x12; `members` are more of its members, with a comma before
/// each.
std::string source(const std::string& id, const std::string& members = "", const std::string& device = "cam") {
    return R"({"id": ")" + id + R"(", "device": {"id": ")" + device + R"(", "name": "Camera"})" +
           R"(, "profiles": [{"width": 16, "height": 12}])" + members + "}";
}

/// The one group "G" in JSON, which the watcher reports as the device "W".
std::string group(const std::string& sources, const std::string& members = "") {
    return R"("groups": [{"id": "G", "displayName": "Group", "watched": {"id": "W"}, "sources": [)" + sources + "]" +
           members + "}]";
}

/// The hardware of "cam" in JSON.
std::string hardware(const std::string& members) { return R"(, "cameras": {"cam": {)" + members + "}}"; }

class ProcessDeviceInfoTest : public SimulatedHub {
protected:
    using Lines = std::vector<std::string>;

    static std::vector<FoundCamera> found() { return CameraHelper::processDeviceInfo(deviceWithId("W")); }

    std::vector<FoundCamera> foundIn(const std::string& members) {
        log().clear();
        useScenario(members);
        return found();
    }

    static Lines uidsOf(const std::vector<FoundCamera>& cameras) {
        Lines uids;
        for (const FoundCamera& camera : cameras)
            uids.push_back(camera.description.uid);
        return uids;
    }

    std::size_t countOf(const std::string& line) const {
        const Lines all = lines();
        return static_cast<std::size_t>(std::count(all.begin(), all.end(), line));
    }

    const std::string skipping = "DEBUG Skipping non colour-visual media";
};

const std::string richGroup =
    R"("groups": [{"id": "Group 1", "displayName": "Büro", "watched": {"id": "W"}, "sources": [
    {"id": "I", "streamType": "VideoPreview", "kind": "Infrared", "device": {"id": "other"}},
    {"id": "S", "streamType": "VideoRecord", "kind": "Color", "profileId": "{P}",
     "device": {"id": "cam", "name": "Gerät", "kind": 1, "enclosure": {"panel": 5, "inDock": false, "inLid": true},
       "properties": {"System.Devices.DeviceInstanceId": "node",
                      "System.Devices.ContainerId": "{00000000-0000-0000-FFFF-FFFFFFFFFFFF}"}},
     "profiles": [{"width": 640, "height": 480}, {"width": 1920, "height": 1080, "frameRate": 29.97, "subtype": "MJPG"},
                  {"width": 1280, "height": 720, "frameRate": 60}]},
    {"id": "A", "streamType": "Audio", "kind": "Audio", "device": {"id": "microphone"}},
    {"id": "U", "streamType": 9, "kind": 77, "profileId": "Q", "device": {"id": "other"}}]}],
  "deviceNodes": [{"id": "node", "properties": {"System.Devices.DeviceManufacturer": "Maker"}}],
  "containers": [{"id": "{00000000-0000-0000-FFFF-FFFFFFFFFFFF}", "properties": {"System.Devices.ModelName": "M 5"}}],
  "cameras": {"cam": {"exposure": {"supported": true, "min": -13, "max": -1, "step": 1}}})";

TEST_F(ProcessDeviceInfoTest, AGroupIsLoggedLineByLine) {
    foundIn(richGroup);
    EXPECT_EQ(lines(),
              (Lines{"DEBUG Processing Source Group. Display Name: Büro Id: Group 1",
                     "DEBUG   SourceInfo.  Id: I StreamType: VideoPreview", "DEBUG   profileId:  SourceKind: Infrared",
                     skipping, "DEBUG   SourceInfo.  Id: S StreamType: VideoRecord",
                     "DEBUG   profileId: {P} SourceKind: Color", "DEBUG     DeviceInfo. Id: cam DeviceInfoKind: 1",
                     "DEBUG     Device Name: Gerät", "DEBUG     LocationPanel: 5 inDock: 0 inLid: 1",
                     "DEBUG    Best Format:", "DEBUG MJPG: 1920x1080 @ 29.97 fps",
                     "DEBUG     Manufacturer: Maker, Model: M 5", "DEBUG Exposure range: [122us, 500000us]",
                     "DEBUG   SourceInfo.  Id: A StreamType: Audio", "DEBUG   profileId:  SourceKind: Audio", skipping,
                     "DEBUG   SourceInfo.  Id: U StreamType: ", "DEBUG   profileId: Q SourceKind: ", skipping}));
    EXPECT_EQ(log().records().size(), lines().size()) << "other loggers have lines too";
}

TEST_F(ProcessDeviceInfoTest, ARecordDescribesTheDeviceOfItsSource) {
    const auto cameras = foundIn(richGroup);
    ASSERT_EQ(cameras.size(), 1u);
    const FoundCamera& camera = cameras[0];
    EXPECT_EQ(camera.profileIndex, 1);
    EXPECT_EQ(camera.deviceInformation->Id(), u"cam");
    EXPECT_EQ(camera.description.uid, "cam");
    EXPECT_EQ(camera.description.name, "Gerät");
    EXPECT_EQ(camera.description.make, "Maker");
    EXPECT_EQ(camera.description.model, "M 5");
    EXPECT_EQ(camera.description.resolutionX, 1920);
    EXPECT_EQ(camera.description.resolutionY, 1080);
    EXPECT_EQ(camera.description.exposureMinValueInUs, 122);
    EXPECT_EQ(camera.description.exposureMaxValueInUs, 500000);
}

TEST_F(ProcessDeviceInfoTest, ACameraIsOpenedOnceForItsExposureAndLetGoWithoutAClose) {
    foundIn(richGroup);
    EXPECT_EQ(calls(), (Lines{R"(MediaFrameSourceGroup.FromIdAsync ["W"])",
                              R"(DeviceInformation.CreateFromIdAsync ["node",3,["System.Devices.DeviceManufacturer"]])",
                              R"(DeviceInformation.CreateFromIdAsync ["{00000000-0000-0000-ffff-ffffffffffff}",2,)"
                              R"(["System.Devices.ModelName","System.Devices.Manufacturer"]])",
                              "MediaFrameSourceGroup.FindAllAsync", R"(MediaCapture.InitializeAsync ["Group 1",1,2])",
                              "MediaCapture.FrameSources", R"(MediaFrameSource.SetFormatAsync ["S",1])",
                              "VideoDeviceController", "MediaDeviceControl.Capabilities"}));
}

TEST_F(ProcessDeviceInfoTest, SourcesThatAreNotInColourAreSkipped) {
    EXPECT_TRUE(
        foundIn(group(source("I", R"(, "kind": "Infrared")") + ", " + source("D", R"(, "kind": "Depth")"))).empty());
    EXPECT_EQ(countOf(skipping), 2u);
    EXPECT_EQ(calls().size(), 1u) << "nothing is opened";
}

TEST_F(ProcessDeviceInfoTest, EveryStreamTypeButAudioIsKeptInColourAlone) {
    const auto isKept = [this](const std::string& streamType, const std::string& kind) {
        const std::size_t count =
            foundIn(group(source("S", R"(, "streamType": )" + streamType + R"(, "kind": )" + kind))).size();
        EXPECT_EQ(countOf(skipping), 1 - count) << streamType << kind;
        return count == 1;
    };
    EXPECT_TRUE(isKept("\"VideoPreview\"", "\"Color\""));
    EXPECT_TRUE(isKept("\"VideoRecord\"", "\"Color\""));
    EXPECT_TRUE(isKept("\"Photo\"", "\"Color\""));
    EXPECT_FALSE(isKept("\"Audio\"", "\"Color\""));
    EXPECT_FALSE(isKept("4", "\"Color\""));
    EXPECT_FALSE(isKept("\"Photo\"", "\"Image\""));
    EXPECT_FALSE(isKept("\"VideoPreview\"", "\"Custom\""));
    EXPECT_FALSE(isKept("\"VideoRecord\"", "\"Audio\""));
    EXPECT_FALSE(isKept("\"VideoPreview\"", "6"));
}

TEST_F(ProcessDeviceInfoTest, AColourPhotoSourceIsKept) {
    EXPECT_EQ(uidsOf(foundIn(group(source("S", R"(, "streamType": "Photo")")))), Lines{"cam"});
    EXPECT_EQ(callsOf("MediaCapture.InitializeAsync"), Lines{R"(["G",0,2])"});
}

TEST_F(ProcessDeviceInfoTest, AKindWithoutANameIsLoggedAsNothingAndSkipped) {
    EXPECT_TRUE(foundIn(group(source("S", R"(, "kind": 6)"))).empty());
    EXPECT_EQ(countOf("DEBUG   profileId:  SourceKind: "), 1u);
    EXPECT_EQ(countOf(skipping), 1u);
}

TEST_F(ProcessDeviceInfoTest, TheNamesOfStreamTypesAndKindsAreLogged) {
    const Lines streamTypes{"VideoPreview", "VideoRecord", "Audio", "Photo"};
    const Lines kinds{"Custom", "Color", "Infrared", "Depth", "Audio", "Image"};
    for (std::size_t i = 0; i < kinds.size(); ++i) {
        foundIn(group(source("S", R"(, "streamType": )" + std::to_string(i) + R"(, "kind": )" + std::to_string(i))));
        const std::string streamType = i < streamTypes.size() ? streamTypes[i] : "";
        EXPECT_EQ(countOf("DEBUG   SourceInfo.  Id: S StreamType: " + streamType), 1u) << i;
        EXPECT_EQ(countOf("DEBUG   profileId:  SourceKind: " + kinds[i]), 1u) << i;
    }
}

TEST_F(ProcessDeviceInfoTest, TwoSourcesOfOneDeviceAreTwoRecordsOfOneUidInTheirOrder) {
    const auto cameras = foundIn(group(source("S", R"(, "streamType": "VideoPreview")") + ", " +
                                       R"({"id": "T", "streamType": "VideoRecord", "device": {"id": "cam"},
                                           "profiles": [{"width": 32, "height": 24}]})"));
    ASSERT_EQ(uidsOf(cameras), (Lines{"cam", "cam"}));
    EXPECT_EQ(cameras[0].description.resolutionX, 16);
    EXPECT_EQ(cameras[1].description.resolutionX, 32);
    EXPECT_EQ(callsOf("MediaCapture.InitializeAsync").size(), 2u);
}

TEST_F(ProcessDeviceInfoTest, RecordsAreInTheGroupsOrder) {
    EXPECT_EQ(uidsOf(foundIn(group(source("S", "", "b") + ", " + source("T", "", "a") + ", " + source("U", "", "c")))),
              (Lines{"b", "a", "c"}));
}

TEST_F(ProcessDeviceInfoTest, ASourceWithoutProfilesEndsTheWalkWithTheRecordsMadeBefore) {
    const auto cameras = foundIn(
        group(source("S") + R"(, {"id": "T", "device": {"id": "bare"}, "profiles": []}, )" + source("U", "", "late")));
    EXPECT_EQ(uidsOf(cameras), Lines{"cam"});
    EXPECT_EQ(linesOf("ERROR"), Lines{"The list has no element at that position. -2147483637"});
    EXPECT_EQ(lines().back(), "ERROR The list has no element at that position. -2147483637");
}

TEST_F(ProcessDeviceInfoTest, ASecondSourceThatFailsToOpenLeavesTheFirstRecordOnly) {
    const auto cameras = foundIn(
        group(source("S") + ", " + source("T", "", "second") + ", " + source("U", "", "late")) +
        R"(, "cameras": {"second": {"faults": {"MediaFrameSource.SetFormatAsync": {"message": "Stuck.", "code": -3}}}})");
    EXPECT_EQ(uidsOf(cameras), Lines{"cam"});
    const Lines errors = linesOf("ERROR");
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0], "Stuck. -3");
    EXPECT_TRUE(errors[1].ends_with(" -2147483629")) << errors[1]; // closed
    EXPECT_EQ(countOf("DEBUG   SourceInfo.  Id: U StreamType: VideoPreview"), 0u);
}

TEST_F(ProcessDeviceInfoTest, ADeviceWithoutAnEnclosureHasNoLocationLine) {
    const auto cameras = foundIn(group(source("S")));
    EXPECT_EQ(uidsOf(cameras), Lines{"cam"});
    EXPECT_EQ(lines(),
              (Lines{"DEBUG Processing Source Group. Display Name: Group Id: G",
                     "DEBUG   SourceInfo.  Id: S StreamType: VideoPreview", "DEBUG   profileId:  SourceKind: Color",
                     "DEBUG     DeviceInfo. Id: cam DeviceInfoKind: 1", "DEBUG     Device Name: Camera",
                     "DEBUG    Best Format:", "DEBUG NV12: 16x12 @ 30.0 fps",
                     "DEBUG     Manufacturer: , Model: ", "DEBUG Exposure range: [62500us, 62500us]"}));
}

TEST_F(ProcessDeviceInfoTest, TheLocationIsLoggedInNumbers) {
    foundIn(R"("groups": [{"id": "W", "sources": [{"id": "S", "profiles": [{"width": 4, "height": 4}],
               "device": {"id": "cam", "kind": 3, "enclosure": {"panel": 1, "inDock": true, "inLid": false}}}]}])");
    EXPECT_EQ(countOf("DEBUG     LocationPanel: 1 inDock: 1 inLid: 0"), 1u);
    EXPECT_EQ(countOf("DEBUG     DeviceInfo. Id: cam DeviceInfoKind: 3"), 1u);
}

TEST_F(ProcessDeviceInfoTest, ACameraWithoutAnExposureControlHasASixteenthOfASecond) {
    const auto cameras = foundIn(group(source("S")));
    ASSERT_EQ(cameras.size(), 1u);
    EXPECT_EQ(cameras[0].description.exposureMinValueInUs, 62500);
    EXPECT_EQ(cameras[0].description.exposureMaxValueInUs, 62500);
    EXPECT_EQ(countOf("DEBUG Exposure range: [62500us, 62500us]"), 1u);
}

TEST_F(ProcessDeviceInfoTest, ADeviceWithNeitherNodeNorContainerHasNeitherMakeNorModel) {
    const auto cameras = foundIn(group(source("S")));
    ASSERT_EQ(cameras.size(), 1u);
    EXPECT_EQ(cameras[0].description.make, "");
    EXPECT_EQ(cameras[0].description.model, "");
    EXPECT_TRUE(callsOf("DeviceInformation.CreateFromIdAsync").empty());
}

TEST_F(ProcessDeviceInfoTest, ASourceWithoutTheSecondInterfaceEndsTheWalkWithTheRecordsMadeBefore) {
    const auto cameras =
        foundIn(group(source("S") + ", " + source("T", R"(, "sourceInfo2": false)") + ", " + source("U", "", "late")));
    EXPECT_EQ(uidsOf(cameras), Lines{"cam"});
    EXPECT_EQ(lines().back(), "ERROR Incorrect Windows Version; could not enumerate cameras");
    EXPECT_EQ(countOf("DEBUG   SourceInfo.  Id: T StreamType: VideoPreview"), 0u);
    EXPECT_EQ(countOf("DEBUG   SourceInfo.  Id: U StreamType: VideoPreview"), 0u);
}

TEST_F(ProcessDeviceInfoTest, ADeviceWithoutAGroupIsAFailedLookup) {
    EXPECT_TRUE(foundIn(R"("groups": [])").empty());
    EXPECT_EQ(lines(),
              Lines{"ERROR MediaFrameSourceGroup.FromIdAsync on W: There is no such source group. -2147024894"});
}

TEST_F(ProcessDeviceInfoTest, AFailedLookupOfTheGroupIsLoggedWithMessageAndCode) {
    EXPECT_TRUE(
        foundIn(group(source("S"), R"(, "faults": {"MediaFrameSourceGroup.FromIdAsync": {"message": "Gerät weg.",
                                                                                               "code": 12}})"))
            .empty());
    EXPECT_EQ(lines(), Lines{"ERROR Gerät weg. 12"});
}

TEST_F(ProcessDeviceInfoTest, AFailedLookupOfMakeAndModelLosesTheRecord) {
    const std::string fault =
        R"(, "faults": {"DeviceInformation.CreateFromIdAsync": {"message": "No node.", "code": -9}})";
    EXPECT_TRUE(foundIn(richGroup + fault).empty());
    EXPECT_EQ(lines().back(), "ERROR No node. -9");
    EXPECT_TRUE(callsOf("MediaCapture.InitializeAsync").empty());
}

TEST_F(ProcessDeviceInfoTest, ACameraThatCannotBeOpenedIsNoRecordAndHasTwoErrorLines) {
    for (const std::string operation :
         {"MediaCapture.InitializeAsync", "MediaCapture.FrameSources", "MediaFrameSource.SetFormatAsync"}) {
        const auto cameras = foundIn(group(source("S")) + hardware(R"("faults": {")" + operation +
                                                                   R"(": {"message": "Busy.", "code": -2147024726}})"));
        EXPECT_TRUE(cameras.empty()) << operation;
        const Lines errors = linesOf("ERROR");
        ASSERT_EQ(errors.size(), 2u) << operation;
        EXPECT_EQ(errors[0], "Busy. -2147024726") << operation;
        EXPECT_TRUE(errors[1].ends_with(" -2147483629")) << errors[1]; // closed
        EXPECT_EQ(lines().back(), "ERROR " + errors[1]) << operation;
    }
}

TEST_F(ProcessDeviceInfoTest, AFailedEnumerationOfTheGroupsIsNoRecord) {
    EXPECT_TRUE(foundIn(group(source("S")) +
                        R"(, "faults": {"MediaFrameSourceGroup.FindAllAsync": {"message": "None.", "code": -4}})")
                    .empty());
    const Lines errors = linesOf("ERROR");
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0], "None. -4");
}

TEST_F(ProcessDeviceInfoTest, ACameraWhoseExposureCannotBeReadIsNoRecord) {
    for (const std::string operation : {"VideoDeviceController", "MediaDeviceControl.Capabilities"}) {
        const auto cameras = foundIn(
            group(source("S")) + hardware(R"("faults": {")" + operation + R"(": {"message": "Deaf.", "code": -6}})"));
        EXPECT_TRUE(cameras.empty()) << operation;
        EXPECT_EQ(linesOf("ERROR"), Lines{"Deaf. -6"}) << operation;
        EXPECT_EQ(lines().back(), "ERROR Deaf. -6") << operation;
    }
}

TEST_F(ProcessDeviceInfoTest, ACameraThatIsGoneFromTheListOfGroupsIsNoRecord) {
    useScenario(group(source("S")));
    AlteredPlatform::install()->groups = [] { return AlteredPlatform::Groups(); };
    EXPECT_TRUE(found().empty());
    EXPECT_EQ(
        linesOf("ERROR"),
        Lines{"MediaCapture.VideoDeviceController on a new capture: the capture has not been initialised -2147483634"});
}

TEST_F(ProcessDeviceInfoTest, AnotherExceptionPassesThrough) {
    AlteredPlatform::install()->group = []() -> AlteredPlatform::Group {
        throw std::runtime_error("no platform error");
    };
    EXPECT_THROW(found(), std::runtime_error);
    EXPECT_TRUE(lines().empty());
}

TEST_F(ProcessDeviceInfoTest, NothingIsTriedAgain) {
    foundIn(group(source("S")) + hardware(R"("faults": {"MediaCapture.InitializeAsync": {"times": 1}})"));
    EXPECT_EQ(callsOf("MediaCapture.InitializeAsync").size(), 1u);
    EXPECT_EQ(uidsOf(found()), Lines{"cam"}) << "the device has been reported anew";
}

TEST_F(ProcessDeviceInfoTest, TheExposureIsCutTo32BitsOfMicroseconds) {
    const auto cameras =
        foundIn(group(source("S")) + hardware(R"("exposure": {"supported": true, "min": -20, "max": 12, "step": 1})"));
    ASSERT_EQ(cameras.size(), 1u);
    EXPECT_EQ(countOf("DEBUG Exposure range: [0us, -198967296us]"), 1u);
    EXPECT_EQ(cameras[0].description.exposureMaxValueInUs, -198967296);
}

TEST_F(ProcessDeviceInfoTest, SeveralMayRunAtOnce) {
    useScenario(group(source("S")) +
                hardware(R"("faults": {"MediaCapture.InitializeAsync": {"fails": false, "delayMs": 50}})"));
    Platform::cameraPlatform();
    std::vector<FoundCamera> other;
    std::thread thread([&] { other = found(); });
    const auto cameras = found();
    thread.join();
    EXPECT_EQ(uidsOf(cameras), Lines{"cam"});
    EXPECT_EQ(uidsOf(other), Lines{"cam"});
}

} // namespace
