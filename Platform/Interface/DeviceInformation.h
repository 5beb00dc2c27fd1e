#pragma once

#include "Platform/Interface/PropertyValue.h"

#include <memory>
#include <optional>
#include <string>

namespace Platform {

enum class DeviceInformationKind { Unknown = 0, DeviceInterface = 1, DeviceContainer = 2, Device = 3 };

/// The side of the machine's case on which a built-in camera sits.
enum class Panel { Unknown = 0, Front = 1, Back = 2, Top = 3, Bottom = 4, Left = 5, Right = 6 };

struct EnclosureLocation {
    Platform::Panel Panel = Panel::Unknown;
    bool InDock = false;
    bool InLid = false;
};

/// What has become of a device that the watcher reported earlier. Any thread; every member may raise.
class IDeviceInformationUpdate {
public:
    virtual ~IDeviceInformationUpdate() = default;

    virtual std::u16string Id() const = 0;

    /// The properties that have new values.
    virtual PropertyMap Properties() const = 0;
};
using DeviceInformationUpdate = std::shared_ptr<IDeviceInformationUpdate>;

/// A device, device node or container as the platform describes it. Safe on any thread: Update may
/// run beside readers. Every member may raise.
class IDeviceInformation {
public:
    virtual ~IDeviceInformation() = default;

    /// The device's stable text identity; compared unit by unit.
    virtual std::u16string Id() const = 0;
    virtual std::u16string Name() const = 0;
    virtual DeviceInformationKind Kind() const = 0;
    /// Empty for a device whose place is not known.
    virtual std::optional<Platform::EnclosureLocation> EnclosureLocation() const = 0;
    virtual PropertyMap Properties() const = 0;

    /// Takes over the update's properties.
    virtual void Update(const DeviceInformationUpdate& update) = 0;
};
using DeviceInformation = std::shared_ptr<IDeviceInformation>;

} // namespace Platform
