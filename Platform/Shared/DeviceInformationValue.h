#pragma once

#include "Platform/Interface/DeviceInformation.h"

#include <mutex>
#include <utility>

namespace Platform::Shared {

/// What a platform knows of a device when it makes its DeviceInformation.
struct DeviceDescription {
    std::u16string id;
    std::u16string name;
    DeviceInformationKind kind = DeviceInformationKind::Unknown;
    std::optional<Platform::EnclosureLocation> enclosure;
    PropertyMap properties;
};

/// A device as it was when this object was made, and as updates have changed it since. Raises nothing.
class DeviceInformationValue final : public IDeviceInformation {
public:
    explicit DeviceInformationValue(DeviceDescription description) : _description(std::move(description)) {}

    std::u16string Id() const override { return _description.id; }
    std::u16string Name() const override { return _description.name; }
    DeviceInformationKind Kind() const override { return _description.kind; }
    std::optional<Platform::EnclosureLocation> EnclosureLocation() const override { return _description.enclosure; }
    PropertyMap Properties() const override;
    /// Properties that are new come after those that the device had.
    void Update(const DeviceInformationUpdate& update) override;

private:
    mutable std::mutex _mutex; // guards the properties; nothing else changes
    DeviceDescription _description;
};

/// The news of one device. Never changes.
class DeviceInformationUpdateValue final : public IDeviceInformationUpdate {
public:
    DeviceInformationUpdateValue(std::u16string id, PropertyMap properties)
        : _id(std::move(id)), _properties(std::move(properties)) {}

    std::u16string Id() const override { return _id; }
    PropertyMap Properties() const override { return _properties; }

private:
    const std::u16string _id;
    const PropertyMap _properties;
};

} // namespace Platform::Shared
