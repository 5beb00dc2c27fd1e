#include "Services/CameraAccess/MakeAndModel.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"

#include <vector>

namespace {

const std::u16string deviceInstanceIdKey = u"System.Devices.DeviceInstanceId";
const std::u16string deviceManufacturerKey = u"System.Devices.DeviceManufacturer";
const std::u16string containerIdKey = u"System.Devices.ContainerId";
const std::u16string modelNameKey = u"System.Devices.ModelName";
const std::u16string manufacturerKey = u"System.Devices.Manufacturer";

Platform::PropertyMap propertiesOf(const std::u16string& id, const std::vector<std::u16string>& names,
                                   Platform::DeviceInformationKind kind) {
    return Platform::blockingWait(Platform::cameraPlatform()->CreateFromIdAsync(id, names, kind))->Properties();
}

/// Assigns the property's text if the property is there, be it empty; whether it is.
bool assignText(std::string& text, const Platform::PropertyMap& properties, const std::u16string& key) {
    if (!properties.HasKey(key))
        return false;
    text = Halden::toUtf8(Platform::unboxString(properties.Lookup(key)));
    return true;
}

} // namespace

void getMakeAndModel(const Platform::DeviceInformation& device, std::string& model, std::string& make) {
    bool isMakeFound = false;
    const Platform::PropertyMap properties = device->Properties();

    if (properties.HasKey(deviceInstanceIdKey)) {
        const std::u16string& nodeId = Platform::unboxString(properties.Lookup(deviceInstanceIdKey));
        const auto node = propertiesOf(nodeId, {deviceManufacturerKey}, Platform::DeviceInformationKind::Device);
        isMakeFound = assignText(make, node, deviceManufacturerKey);
    }
    if (properties.HasKey(containerIdKey)) {
        const Platform::Guid& guid = Platform::unboxGuid(properties.Lookup(containerIdKey));
        const auto container =
            propertiesOf(Halden::toUtf16(Platform::guidToText(guid)), {modelNameKey, manufacturerKey},
                         Platform::DeviceInformationKind::DeviceContainer);
        assignText(model, container, modelNameKey);
        if (!isMakeFound)
            assignText(make, container, manufacturerKey);
    }
}
