#include "Services/CameraAccess/MakeAndModel.h"

#include "Platform/Shared/DeviceInformationValue.h"
#include "Tests/Support/AlteredPlatform.h"
#include "Tests/Support/SimulatedHub.h"

namespace {

using Platform::PropertyMap;

const Platform::Guid containerId{0x0A1B2C3D, 0x4E5F, 0x0067, {0x08, 0x09, 0xA0, 0xB0, 0xC0, 0xD0, 0xE0, 0xF0}};
const std::string containerText = "{0a1b2c3d-4e5f-0067-0809-a0b0c0d0e0f0}";

const PropertyMap::Entry inNode{u"System.Devices.DeviceInstanceId", std::u16string(u"node")};
const PropertyMap::Entry inContainer{u"System.Devices.ContainerId", containerId};

Platform::DeviceInformation deviceWith(const PropertyMap& properties) {
    return std::make_shared<Platform::Shared::DeviceInformationValue>(
        Platform::Shared::DeviceDescription{u"camera", u"Camera", {}, {}, properties});
}

/// A scenario in which the device node and the container of the device have those properties, in JSON.
std::string scenarioOf(const std::string& node, const std::string& container) {
    return R"("deviceNodes": [{"id": "node", "properties": {)" + node + R"(}}], "containers": [{"id": ")" +
           containerText + R"(", "properties": {)" + container + "}}]";
}

const std::string nodeMakeA = R"("System.Devices.DeviceManufacturer": "A")";
const std::string containerMakeB = R"("System.Devices.Manufacturer": "B")";
const std::string containerModelM = R"("System.Devices.ModelName": "M")";

class MakeAndModelTest : public SimulatedHub {
protected:
    void find(const PropertyMap& properties) { getMakeAndModel(deviceWith(properties), model, make); }

    std::string make;
    std::string model;
};

TEST_F(MakeAndModelTest, ADeviceWithNeitherNodeNorContainerHasNeitherAndNothingIsAskedOrLogged) {
    find({{u"System.Devices.ModelName", std::u16string(u"M")}, {u"System.Devices.Manufacturer", std::u16string(u"B")}});
    EXPECT_EQ(make, "");
    EXPECT_EQ(model, "");
    EXPECT_TRUE(calls().empty());
    EXPECT_TRUE(log().records().empty());
}

TEST_F(MakeAndModelTest, TheMakerOfTheNodeWinsOverThatOfTheContainer) {
    useScenario(scenarioOf(nodeMakeA, containerMakeB + ", " + containerModelM));
    find({inNode, inContainer});
    EXPECT_EQ(make, "A");
    EXPECT_EQ(model, "M");
}

TEST_F(MakeAndModelTest, ANodeWithoutAMakerLeavesItToTheContainer) {
    useScenario(scenarioOf("", containerMakeB));
    find({inNode, inContainer});
    EXPECT_EQ(make, "B");
}

TEST_F(MakeAndModelTest, ADeviceWithoutANodeHasTheMakerOfItsContainer) {
    useScenario(scenarioOf(nodeMakeA, containerMakeB));
    find({inContainer});
    EXPECT_EQ(make, "B");
}

TEST_F(MakeAndModelTest, AnEmptyMakerOfTheNodeCountsAsFound) {
    useScenario(scenarioOf(R"("System.Devices.DeviceManufacturer": "")", containerMakeB));
    make = "before";
    find({inNode, inContainer});
    EXPECT_EQ(make, "");
}

TEST_F(MakeAndModelTest, TheModelIsTheContainersOnly) {
    useScenario(scenarioOf(R"("System.Devices.ModelName": "of the node")", ""));
    find({inNode, inContainer});
    EXPECT_EQ(model, "");
    EXPECT_EQ(make, "");
}

TEST_F(MakeAndModelTest, WithoutAContainerThereIsNoModel) {
    useScenario(scenarioOf(nodeMakeA, containerModelM));
    find({inNode});
    EXPECT_EQ(make, "A");
    EXPECT_EQ(model, "");
}

TEST_F(MakeAndModelTest, TheNodeIsAskedFirstAndTheContainerByItsGuidInLowerCaseAndBraces) {
    useScenario(scenarioOf(nodeMakeA, containerModelM));
    find({inContainer, inNode});
    EXPECT_EQ(calls(), (std::vector<std::string>{
                           R"(DeviceInformation.CreateFromIdAsync ["node",3,["System.Devices.DeviceManufacturer"]])",
                           R"(DeviceInformation.CreateFromIdAsync [")" + containerText +
                               R"(",2,["System.Devices.ModelName","System.Devices.Manufacturer"]])"}));
}

TEST_F(MakeAndModelTest, TextsAreUtf8) {
    useScenario(
        scenarioOf(R"("System.Devices.DeviceManufacturer": "Gerätebau")", R"("System.Devices.ModelName": "📷")"));
    find({inNode, inContainer});
    EXPECT_EQ(make, "Gerätebau");
    EXPECT_EQ(model, "📷");
}

TEST_F(MakeAndModelTest, TextThatCannotBeConvertedIsEmptyAndCountsAsFound) {
    const std::u16string broken{u'A', char16_t{0xD800}};
    const auto altered = AlteredPlatform::install();
    altered->node = [broken] {
        return deviceWith({{u"System.Devices.DeviceManufacturer", broken},
                           {u"System.Devices.ModelName", broken},
                           {u"System.Devices.Manufacturer", std::u16string(u"B")}});
    };
    make = model = "before";
    find({inNode, inContainer});
    EXPECT_EQ(make, "");
    EXPECT_EQ(model, "");
}

TEST_F(MakeAndModelTest, ANodeThatIsNotThereRaisesAndTheContainerIsNotAsked) {
    useScenario(R"("containers": [])");
    EXPECT_EQ(errorOf([&] { find({inNode, inContainer}); }).code(), winrt::result::notFound);
    EXPECT_EQ(calls().size(), 1u);
}

TEST_F(MakeAndModelTest, AContainerThatIsNotThereRaises) {
    useScenario(R"("containers": [])");
    EXPECT_EQ(errorOf([&] { find({inContainer}); }).code(), winrt::result::notFound);
}

TEST_F(MakeAndModelTest, AFailedLookupRaisesThePlatformsError) {
    useScenario(scenarioOf(nodeMakeA, containerModelM) +
                R"(, "faults": {"DeviceInformation.CreateFromIdAsync": {"message": "No.", "code": -5, "after": 1}})");
    const auto error = errorOf([&] { find({inNode, inContainer}); });
    EXPECT_EQ(error.message(), u"No.");
    EXPECT_EQ(error.code(), -5);
    EXPECT_EQ(make, "A");
}

TEST_F(MakeAndModelTest, APropertyOfAnotherTypeRaises) {
    EXPECT_EQ(errorOf([&] { find({{inNode.first, containerId}}); }).code(), winrt::result::noInterface);
    EXPECT_EQ(errorOf([&] { find({{inContainer.first, std::u16string(u"text")}}); }).code(),
              winrt::result::noInterface);
    EXPECT_TRUE(calls().empty());
}

} // namespace
