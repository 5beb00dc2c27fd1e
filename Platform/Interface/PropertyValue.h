#pragma once

#include "Platform/Interface/Collections.h"
#include "Platform/Interface/Guid.h"
#include "Platform/Interface/HresultError.h"

#include <string>
#include <variant>

namespace Platform {

/// A boxed property of a device: text, UTF-16, or an identifier. Any thread.
using PropertyValue = std::variant<std::u16string, Guid>;

/// By name, "System.Devices.ContainerId" for instance; IDeviceInformation lists those that count.
using PropertyMap = MapView<PropertyValue>;

/// What is in the box, for as long as the box lives. Raises noInterface for another type than the one in it.
template <typename T> const T& unbox(const PropertyValue& value) {
    if (const T* unboxed = std::get_if<T>(&value))
        return *unboxed;
    throw winrt::hresult_error(winrt::result::noInterface, u"The property has another type than the one asked for.");
}

/// The same for the two types that there are.
inline const std::u16string& unboxString(const PropertyValue& value) { return unbox<std::u16string>(value); }
inline const Guid& unboxGuid(const PropertyValue& value) { return unbox<Guid>(value); }

} // namespace Platform
