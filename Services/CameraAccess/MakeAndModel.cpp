#include "Services/CameraAccess/MakeAndModel.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/AsyncWait.h"
#include "Platform/Interface/CameraPlatform.h"

#include <vector>

namespace {

struct PropertyKeys {
    std::u16string deviceInstanceId = u"System.Devices.DeviceInstanceId";
    std::u16string deviceManufacturer = u"System.Devices.DeviceManufacturer";
    std::u16string containerId = u"System.Devices.ContainerId";
    std::u16string modelName = u"System.Devices.ModelName";
    std::u16string manufacturer = u"System.Devices.Manufacturer";
};

/// Built on first use, by whichever of the platform's threads comes first.
const PropertyKeys& propertyKeys() {
    static const PropertyKeys keys;
    return keys;
}

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

void getMakeAndModel(Platform::DeviceInformation device, std::string& model, std::string& make) {
    const PropertyKeys& keys = propertyKeys();
    bool isMakeFound = false;
    const Platform::PropertyMap properties = device->Properties();

    if (properties.HasKey(keys.deviceInstanceId)) {
        const std::u16string& nodeId = Platform::unboxString(properties.Lookup(keys.deviceInstanceId));
        const auto node = propertiesOf(nodeId, {keys.deviceManufacturer}, Platform::DeviceInformationKind::Device);
        isMakeFound = assignText(make, node, keys.deviceManufacturer);
    }
    if (properties.HasKey(keys.containerId)) {
        const Platform::Guid& guid = Platform::unboxGuid(properties.Lookup(keys.containerId));
        const auto container =
            propertiesOf(Halden::toUtf16(Platform::guidToText(guid)), {keys.modelName, keys.manufacturer},
                         Platform::DeviceInformationKind::DeviceContainer);
        assignText(model, container, keys.modelName);
        if (!isMakeFound)
            assignText(make, container, keys.manufacturer);
    }
}
