#include "Platform/Shared/DeviceInformationValue.h"

#include <algorithm>
#include <vector>

namespace Platform::Shared {

PropertyMap DeviceInformationValue::Properties() const {
    std::lock_guard lock(_mutex);
    return _description.properties;
}

void DeviceInformationValue::Update(const DeviceInformationUpdate& update) {
    const PropertyMap news = update->Properties();
    std::lock_guard lock(_mutex);
    std::vector<PropertyMap::Entry> entries(_description.properties.begin(), _description.properties.end());
    for (const auto& entry : news) {
        const auto old =
            std::find_if(entries.begin(), entries.end(), [&](const auto& known) { return known.first == entry.first; });
        if (old != entries.end())
            old->second = entry.second;
        else
            entries.push_back(entry);
    }
    _description.properties = PropertyMap(std::move(entries));
}

} // namespace Platform::Shared
