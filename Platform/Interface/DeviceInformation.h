#pragma once

#include "Platform/Interface/PropertyValue.h"

#include <memory>
#include <optional>
#include <string>

namespace Platform {

/// What an id names: a device that streams, the physical thing that devices belong to, or a node of the system's tree.
enum class DeviceInformationKind { Unknown = 0, DeviceInterface = 1, DeviceContainer = 2, Device = 3 };

/// The side of the machine's case on which a built-in camera sits.
enum class Panel { Unknown = 0, Front = 1, Back = 2, Top = 3, Bottom = 4, Left = 5, Right = 6 };

/// Where on the machine a built-in camera sits.
struct EnclosureLocation {
    Platform::Panel Panel = Panel::Unknown; ///< Unknown too where only the dock or the lid is known.
    bool InDock = false;                    ///< In the docking station, which the machine may be without at times.
    bool InLid = false;                     ///< In the lid, with which it moves and may be shut.
};

/// What has become of a device that the watcher reported earlier. Any thread. Every member may raise.
class IDeviceInformationUpdate {
public:
    virtual ~IDeviceInformationUpdate() = default;

    /// The Id of the device, as it was reported.
    virtual std::u16string Id() const = 0;

    /// The properties that have new values; empty in the news that a device has gone.
    virtual PropertyMap Properties() const = 0;
};
using DeviceInformationUpdate = std::shared_ptr<IDeviceInformationUpdate>;

/// A device, device node or container as the platform describes it. It stays as it is when the device goes. Any thread.
/// Update may run beside readers. Every member may raise.
class IDeviceInformation {
public:
    virtual ~IDeviceInformation() = default;

    /// The device's stable text identity; compared unit by unit. Never empty.
    virtual std::u16string Id() const = 0;

    /// For people; may be empty.
    virtual std::u16string Name() const = 0;

    /// The kind that it was asked for, or reported, as.
    virtual DeviceInformationKind Kind() const = 0;

    /// Empty for a device whose place is not known.
    virtual std::optional<Platform::EnclosureLocation> EnclosureLocation() const = 0;

    /// What the platform knows; any of these may be missing. Text unless told otherwise. Of a device that streams, the
    /// ids for CreateFromIdAsync: "System.Devices.DeviceInstanceId" of its node, "System.Devices.ContainerId" of its
    /// container (a Guid). Of a node: "System.Devices.DeviceManufacturer". Of a container: "System.Devices.ModelName"
    /// and "System.Devices.Manufacturer".
    virtual PropertyMap Properties() const = 0;

    /// Takes over the update's properties; those that it does not name stay.
    virtual void Update(const DeviceInformationUpdate& update) = 0;
};
using DeviceInformation = std::shared_ptr<IDeviceInformation>;

} // namespace Platform
