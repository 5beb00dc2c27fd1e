#include "Platform/Simulated/Scenario/ScenarioReader.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Tests/Platform/Simulated/SimulatedFixture.h"
#include "Tests/Support/ScenarioFile.h"

#include <gtest/gtest.h>

#include <string>

using namespace Platform;
using namespace Platform::Simulated;

namespace {

Scenario read(const std::string& text) { return readScenario(text, "/folder/file.json"); }

std::string errorOf(const std::string& text) {
    return Halden::toUtf8(outcomeOf([&] { read(text); }).message);
}

std::string sourceText(const std::string& source) {
    return R"({"groups": [{"id": "G", "sources": [)" + source + "]}]}";
}

std::string cameraText(const std::string& camera) { return R"({"cameras": {"D": )" + camera + "}}"; }

TEST(ScenarioReaderTest, EveryMemberOfTheTopHasADefault) {
    const Scenario scenario = read("{}");
    EXPECT_TRUE(scenario.groups.empty());
    EXPECT_TRUE(scenario.deviceNodes.empty());
    EXPECT_TRUE(scenario.containers.empty());
    EXPECT_TRUE(scenario.cameras.empty());
    EXPECT_TRUE(scenario.journal.empty());
}

TEST(ScenarioReaderTest, AGroupHasDefaults) {
    const Scenario scenario = read(R"({"groups": [{"id": "G", "displayName": "N"}, {"id": "H"}]})");
    ASSERT_EQ(scenario.groups.size(), 2U);
    EXPECT_EQ(scenario.groups[0].watched.id, u"G");
    EXPECT_EQ(scenario.groups[0].watched.name, u"N");
    EXPECT_EQ(scenario.groups[0].watched.kind, DeviceInformationKind::DeviceInterface);
    EXPECT_TRUE(scenario.groups[0].sources.empty());
    EXPECT_EQ(scenario.groups[1].displayName, u"");
}

TEST(ScenarioReaderTest, ASourceHasDefaults) {
    const auto source = read(sourceText(R"({"id": "S", "device": {"id": "D"}})")).groups[0].sources[0];
    EXPECT_EQ(source.streamType, MediaStreamType::VideoPreview);
    EXPECT_EQ(source.kind, MediaFrameSourceKind::Color);
    EXPECT_EQ(source.profileId, u"");
    EXPECT_TRUE(source.profiles.empty());
    EXPECT_TRUE(source.formats.empty());
    EXPECT_TRUE(source.sourceInfo2);
    EXPECT_EQ(source.device.name, u"");
    EXPECT_EQ(source.device.kind, DeviceInformationKind::DeviceInterface);
    EXPECT_FALSE(source.device.enclosure);
    EXPECT_EQ(source.device.properties.Size(), 0U);
}

TEST(ScenarioReaderTest, FormatsAreTheProfilesUnlessTheyAreGiven) {
    const std::string start = R"({"id": "S", "device": {"id": "D"}, "profiles": [{"width": 4, "height": 3}])";
    const auto same = read(sourceText(start + "}")).groups[0].sources[0];
    ASSERT_EQ(same.formats.size(), 1U);
    EXPECT_EQ(same.formats[0].Width, 4U);
    EXPECT_EQ(same.formats[0].Height, 3U);
    EXPECT_EQ(same.formats[0].FrameRate, 30.0);
    EXPECT_EQ(same.formats[0].Subtype, u"NV12");
    const auto own =
        read(sourceText(start + R"(, "formats": [{"width": 8, "height": 6, "frameRate": 29.97, "subtype": "YUY2"}]})"));
    EXPECT_EQ(own.groups[0].sources[0].profiles[0].Width, 4U);
    EXPECT_EQ(own.groups[0].sources[0].formats[0].Width, 8U);
    EXPECT_EQ(own.groups[0].sources[0].formats[0].FrameRate, 29.97);
    EXPECT_EQ(own.groups[0].sources[0].formats[0].Subtype, u"YUY2");
    EXPECT_TRUE(read(sourceText(start + R"(, "formats": []})")).groups[0].sources[0].formats.empty());
}

TEST(ScenarioReaderTest, StreamTypesAndKindsHaveNamesOrNumbers) {
    const auto source = [](const std::string& members) {
        return read(sourceText(R"({"id": "S", "device": {"id": "D"}, )" + members + "}")).groups[0].sources[0];
    };
    EXPECT_EQ(source(R"("streamType": "VideoPreview")").streamType, MediaStreamType::VideoPreview);
    EXPECT_EQ(source(R"("streamType": "VideoRecord")").streamType, MediaStreamType::VideoRecord);
    EXPECT_EQ(source(R"("streamType": "Audio")").streamType, MediaStreamType::Audio);
    EXPECT_EQ(source(R"("streamType": "Photo")").streamType, MediaStreamType::Photo);
    EXPECT_EQ(source(R"("streamType": 17)").streamType, static_cast<MediaStreamType>(17));
    EXPECT_EQ(source(R"("kind": "Custom")").kind, MediaFrameSourceKind::Custom);
    EXPECT_EQ(source(R"("kind": "Color")").kind, MediaFrameSourceKind::Color);
    EXPECT_EQ(source(R"("kind": "Infrared")").kind, MediaFrameSourceKind::Infrared);
    EXPECT_EQ(source(R"("kind": "Depth")").kind, MediaFrameSourceKind::Depth);
    EXPECT_EQ(source(R"("kind": "Audio")").kind, MediaFrameSourceKind::Audio);
    EXPECT_EQ(source(R"("kind": "Image")").kind, MediaFrameSourceKind::Image);
    EXPECT_EQ(source(R"("kind": 42)").kind, static_cast<MediaFrameSourceKind>(42));
}

TEST(ScenarioReaderTest, ADeviceHasItsPlaceAndProperties) {
    const auto device = read(sourceText(R"({"id": "S", "device": {"id": "D", "name": "N", "kind": 5,
        "enclosure": {"panel": 2, "inDock": true},
        "properties": {"System.Devices.DeviceInstanceId": "node",
                       "System.Devices.ContainerId": "{0F8FAD5B-d9cb-469f-a165-70867728950e}"}}})"))
                            .groups[0]
                            .sources[0]
                            .device;
    EXPECT_EQ(device.kind, static_cast<DeviceInformationKind>(5));
    ASSERT_TRUE(device.enclosure);
    EXPECT_EQ(device.enclosure->Panel, Panel::Back);
    EXPECT_TRUE(device.enclosure->InDock);
    EXPECT_FALSE(device.enclosure->InLid);
    EXPECT_EQ(unboxString(device.properties.Lookup(u"System.Devices.DeviceInstanceId")), u"node");
    EXPECT_EQ(guidToText(unboxGuid(device.properties.Lookup(u"System.Devices.ContainerId"))),
              "{0f8fad5b-d9cb-469f-a165-70867728950e}");
}

TEST(ScenarioReaderTest, ATextThatIsNoGuidStaysAText) {
    for (const char* text : {"", "{}", "0f8fad5b-d9cb-469f-a165-70867728950e", "{0f8fad5b-d9cb-469f-a165-70867728950}",
                             "{0f8fad5b-d9cb-469f-a165-70867728950g}", "{0f8fad5b_d9cb-469f-a165-70867728950e}"}) {
        const auto device = read(sourceText(R"({"id": "S", "device": {"id": "D", "properties": {"P": ")" +
                                            std::string(text) + R"("}}})"))
                                .groups[0]
                                .sources[0]
                                .device;
        EXPECT_EQ(Halden::toUtf8(unboxString(device.properties.Lookup(u"P"))), text);
    }
}

TEST(ScenarioReaderTest, ACameraHasDefaults) {
    const CameraDefinition camera = read(cameraText("{}")).cameras.at(u"D");
    EXPECT_EQ(camera.exposure, ControlDefinition());
    EXPECT_FALSE(camera.exposure.supported);
    EXPECT_TRUE(camera.exposure.autoModeSupported);
    EXPECT_FALSE(camera.exposure.latch);
    EXPECT_EQ(camera.exposureControl, (ValueControlDefinition{false, false, 1000, 10000000, 1000, 333333}));
    EXPECT_EQ(camera.isoSpeedControl, (ValueControlDefinition{false, false, 100, 800, 100, 100}));
    EXPECT_EQ(camera.focusControl, (PresetControlDefinition{false, 0}));
    EXPECT_FALSE(camera.exposureCompensationControl.supported);
    EXPECT_EQ(camera.capture.delay.count(), 0);
    EXPECT_EQ(camera.capture.outcome, CaptureOutcome::Picture);
    EXPECT_TRUE(camera.capture.picture.empty());
    EXPECT_EQ(camera.capture.neutralExposure, -6.0);
}

TEST(ScenarioReaderTest, RelativePathsStartAtTheFilesFolder) {
    ScenarioFile file;
    ScenarioFile::writeFile(file.folder() / "scene.png", "picture");
    const std::string text = R"({"journal": "j.txt", "cameras": {"D": {"capture": {"picture": "scene.png"}}}})";
    const Scenario scenario = readScenario(text, file.path());
    EXPECT_EQ(scenario.journal, file.folder() / "j.txt");
    EXPECT_EQ(scenario.cameras.at(u"D").capture.picture, file.folder() / "scene.png");
    EXPECT_EQ(read(R"({"journal": "/elsewhere/j.txt"})").journal, "/elsewhere/j.txt");
}

TEST(ScenarioReaderTest, AFaultHasDefaults) {
    const Faults faults = read(R"({"faults": {"DeviceWatcher.Start": {}}})").faults;
    const FaultHit hit = faults.take("DeviceWatcher.Start");
    ASSERT_TRUE(hit.error);
    EXPECT_EQ(hit.error->code(), -2147467259);
    EXPECT_EQ(hit.error->message(), u"");
    EXPECT_EQ(hit.delay.count(), 0);
    EXPECT_TRUE(faults.take("DeviceWatcher.Start").error);
    EXPECT_FALSE(faults.take("DeviceInformation.CreateWatcher").error);
}

TEST(ScenarioReaderTest, WhatIsNoJsonNamesTheFile) {
    for (const char* text : {"", "{", "nothing", "null", "1", "{} {}", "{\"journal\": }", "{\"groups\": [1,]}",
                             "{\"journal\": \"a\", \"journal\": \"b\"}", "{'journal': 'a'}"})
        EXPECT_EQ(errorOf(text).rfind("/folder/file.json: is no JSON: ", 0), 0U) << text << " gave " << errorOf(text);
    EXPECT_EQ(errorOf("{\"journal\": \"\xFF\"}"), "/folder/file.json: is not UTF-8 text");
    EXPECT_EQ(errorOf(std::string(2000, '[')).rfind("/folder/file.json: is no JSON: ", 0), 0U);
    EXPECT_EQ(errorOf("[]"), "/folder/file.json: must be an object");
}

TEST(ScenarioReaderTest, AnUnknownMemberIsAnError) {
    const std::string file = "/folder/file.json: ";
    EXPECT_EQ(errorOf(R"({"group": []})"), file + "group: is not known here");
    EXPECT_EQ(errorOf(R"({"groups": [{"id": "G", "name": "N"}]})"), file + "groups[0].name: is not known here");
    EXPECT_EQ(errorOf(sourceText(R"({"id": "S", "device": {"id": "D"}, "type": 1})")),
              file + "groups[0].sources[0].type: is not known here");
    EXPECT_EQ(errorOf(sourceText(R"({"id": "S", "device": {"id": "D", "uid": 1}})")),
              file + "groups[0].sources[0].device.uid: is not known here");
    EXPECT_EQ(errorOf(sourceText(R"({"id": "S", "device": {"id": "D", "enclosure": {"dock": true}}})")),
              file + "groups[0].sources[0].device.enclosure.dock: is not known here");
    EXPECT_EQ(
        errorOf(sourceText(R"({"id": "S", "device": {"id": "D"}, "formats": [{"width": 1, "height": 1, "rate": 1}]})")),
        file + "groups[0].sources[0].formats[0].rate: is not known here");
    EXPECT_EQ(errorOf(R"({"containers": [{"id": "c", "name": ""}]})"), file + "containers[0].name: is not known here");
    EXPECT_EQ(errorOf(cameraText(R"({"zoom": {}})")), file + "cameras.D.zoom: is not known here");
    EXPECT_EQ(errorOf(cameraText(R"({"focus": {"steps": 1}})")), file + "cameras.D.focus.steps: is not known here");
    EXPECT_EQ(errorOf(cameraText(R"({"isoSpeedControl": {"preset": 1}})")),
              file + "cameras.D.isoSpeedControl.preset: is not known here");
    EXPECT_EQ(errorOf(cameraText(R"({"focusControl": {"value": 1}})")),
              file + "cameras.D.focusControl.value: is not known here");
    EXPECT_EQ(errorOf(cameraText(R"({"exposureCompensationControl": {"auto": 1}})")),
              file + "cameras.D.exposureCompensationControl.auto: is not known here");
    EXPECT_EQ(errorOf(cameraText(R"({"capture": {"delay": 1}})")), file + "cameras.D.capture.delay: is not known here");
    EXPECT_EQ(errorOf(R"({"faults": {"DeviceWatcher.Start": {"count": 1}}})"),
              file + "faults.DeviceWatcher.Start.count: is not known here");
}

TEST(ScenarioReaderTest, AFaultBelongsToItsPlace) {
    EXPECT_EQ(errorOf(R"({"faults": {"MediaCapture.Close": {}}})"),
              "/folder/file.json: faults.MediaCapture.Close: is not known here");
    EXPECT_EQ(errorOf(R"({"groups": [{"id": "G", "faults": {"DeviceWatcher.Start": {}}}]})"),
              "/folder/file.json: groups[0].faults.DeviceWatcher.Start: is not known here");
    EXPECT_EQ(errorOf(cameraText(R"({"faults": {"MediaFrameSourceGroup.FromIdAsync": {}}})")),
              "/folder/file.json: cameras.D.faults.MediaFrameSourceGroup.FromIdAsync: is not known here");
}

TEST(ScenarioReaderTest, AMissingMemberIsNamed) {
    const std::string file = "/folder/file.json: ";
    EXPECT_EQ(errorOf(R"({"groups": [{}]})"), file + "groups[0].id: is missing");
    EXPECT_EQ(errorOf(sourceText(R"({"device": {"id": "D"}})")), file + "groups[0].sources[0].id: is missing");
    EXPECT_EQ(errorOf(sourceText(R"({"id": "S"})")), file + "groups[0].sources[0].device: is missing");
    EXPECT_EQ(errorOf(sourceText(R"({"id": "S", "device": {}})")), file + "groups[0].sources[0].device.id: is missing");
    EXPECT_EQ(errorOf(R"({"groups": [{"id": "G", "watched": {}}]})"), file + "groups[0].watched.id: is missing");
    EXPECT_EQ(errorOf(sourceText(R"({"id": "S", "device": {"id": "D"}, "profiles": [{"height": 1}]})")),
              file + "groups[0].sources[0].profiles[0].width: is missing");
    EXPECT_EQ(errorOf(sourceText(R"({"id": "S", "device": {"id": "D"}, "profiles": [{"width": 1}]})")),
              file + "groups[0].sources[0].profiles[0].height: is missing");
    EXPECT_EQ(errorOf(R"({"deviceNodes": [{}]})"), file + "deviceNodes[0].id: is missing");
}

TEST(ScenarioReaderTest, AMemberOfTheWrongTypeIsNamed) {
    const std::string file = "/folder/file.json: ";
    EXPECT_EQ(errorOf(R"({"groups": {}})"), file + "groups: must be a list");
    EXPECT_EQ(errorOf(R"({"groups": [1]})"), file + "groups[0]: must be an object");
    EXPECT_EQ(errorOf(R"({"groups": [{"id": 1}]})"), file + "groups[0].id: must be a text");
    EXPECT_EQ(errorOf(R"({"journal": null})"), file + "journal: must be a text");
    EXPECT_EQ(errorOf(cameraText("null")), file + "cameras.D: must be an object");
    EXPECT_EQ(errorOf(cameraText(R"({"focus": {"supported": 1}})")),
              file + "cameras.D.focus.supported: must be true or false");
    EXPECT_EQ(errorOf(cameraText(R"({"focus": {"min": "1"}})")), file + "cameras.D.focus.min: must be a number");
    EXPECT_EQ(errorOf(cameraText(R"({"focus": {"refuse": ["Close"]}})")),
              file + "cameras.D.focus.refuse[0]: must be TrySetValue, TryGetValue, TrySetAuto or TryGetAuto");
    EXPECT_EQ(errorOf(cameraText(R"({"capture": {"outcome": "no"}})")),
              file + "cameras.D.capture.outcome: must be picture, error or never");
    EXPECT_EQ(errorOf(cameraText(R"({"capture": {"delayMs": -1}})")),
              file + "cameras.D.capture.delayMs: must be a whole number of milliseconds, 0 or more");
    EXPECT_EQ(errorOf(cameraText(R"({"capture": {"picture": "none.png"}})")),
              file + "cameras.D.capture.picture: there is no such file: /folder/none.png");
    EXPECT_EQ(errorOf(cameraText(R"({"isoSpeedControl": {"max": 5000000000}})")),
              file + "cameras.D.isoSpeedControl.max: must be a whole number, 0 or more");
    EXPECT_EQ(errorOf(sourceText(R"({"id": "S", "device": {"id": "D"}, "kind": "Red"})")),
              file + "groups[0].sources[0].kind: must be a number or one of Custom, Color, Infrared, Depth, Audio, "
                     "Image");
    EXPECT_EQ(errorOf(sourceText(R"({"id": "S", "device": {"id": "D"}, "profiles": [{"width": -1, "height": 1}]})")),
              file + "groups[0].sources[0].profiles[0].width: must be a whole number, 0 or more");
    EXPECT_EQ(errorOf(R"({"faults": {"DeviceWatcher.Start": {"code": 5000000000}}})"),
              file + "faults.DeviceWatcher.Start.code: must be a whole number of 32 bits");
    EXPECT_EQ(errorOf(R"({"faults": {"DeviceWatcher.Start": {"after": -1}}})"),
              file + "faults.DeviceWatcher.Start.after: must be a whole number, 0 or more");
    EXPECT_EQ(errorOf(R"({"groups": [{"id": "\uDC00"}]})"), file + "groups[0].id: is not well-formed text");
}

TEST(ScenarioReaderTest, TwoGroupsOfOneIdAreAnError) {
    EXPECT_EQ(errorOf(R"({"groups": [{"id": "G"}, {"id": "G"}]})"),
              "/folder/file.json: groups[1].id: another group has this id");
}

TEST(ScenarioReaderTest, TheBuiltInScenarioHasOneCamera) {
    const Scenario scenario = builtInScenario();
    ASSERT_EQ(scenario.groups.size(), 1U);
    ASSERT_EQ(scenario.groups[0].sources.size(), 1U);
    const SourceDefinition& source = scenario.groups[0].sources[0];
    EXPECT_EQ(source.device.name, u"Simulated Camera");
    ASSERT_EQ(source.profiles.size(), 1U);
    EXPECT_EQ(source.profiles[0].Width, 1920U);
    EXPECT_EQ(source.profiles[0].Height, 1080U);
    const ControlDefinition& exposure = scenario.cameras.at(source.device.id).exposure;
    EXPECT_TRUE(exposure.supported);
    EXPECT_EQ(exposure.min, -13);
    EXPECT_EQ(exposure.max, 0);
    EXPECT_EQ(exposure.step, 1);
}

} // namespace
