#include "Platform/Shared/DeviceInformationValue.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
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
    std::map<std::u16string, std::size_t> places; // of each key's first entry
    for (std::size_t place = 0; place < entries.size(); ++place)
        places.emplace(entries[place].first, place);
    for (const auto& entry : news) {
        const auto [known, isNew] = places.emplace(entry.first, entries.size());
        if (isNew)
            entries.push_back(entry);
        else
            entries[known->second].second = entry.second;
    }
    _description.properties = PropertyMap(std::move(entries));
}

} // namespace Platform::Shared
