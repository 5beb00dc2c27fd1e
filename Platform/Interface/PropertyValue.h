#pragma once

#include "Platform/Interface/Collections.h"
#include "Platform/Interface/Guid.h"
#include "Platform/Interface/HresultError.h"

#include <string>
#include <variant>

namespace Platform {

/// A boxed property of a device. unboxString and unboxGuid raise noInterface for another type.
using PropertyValue = std::variant<std::u16string, Guid>;

using PropertyMap = MapView<PropertyValue>;

template <typename T> const T& unbox(const PropertyValue& value) {
    if (const T* unboxed = std::get_if<T>(&value))
        return *unboxed;
    throw winrt::hresult_error(winrt::result::noInterface, u"The property has another type than the one asked for.");
}

inline const std::u16string& unboxString(const PropertyValue& value) { return unbox<std::u16string>(value); }
inline const Guid& unboxGuid(const PropertyValue& value) { return unbox<Guid>(value); }

} // namespace Platform
