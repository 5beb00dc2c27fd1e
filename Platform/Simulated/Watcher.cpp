#include "Platform/Simulated/Watcher.h"

#include "Platform/Simulated/World/JournaledCall.h"
#include "Platform/Simulated/World/Simulation.h"

#include <map>
#include <string_view>
#include <utility>
#include <vector>

namespace Platform::Simulated {
namespace {

/// The groups of a scenario, to find those again that stayed the same devices.
class KnownGroups {
public:
    explicit KnownGroups(const Scenario& scenario) {
        for (const GroupDefinition& group : scenario.groups)
            _groups.emplace(group.id, &group);
    }

    const GroupDefinition* findSame(const GroupDefinition& group) const {
        const auto found = _groups.find(group.id);
        return found != _groups.end() && found->second->watched.id == group.watched.id ? found->second : nullptr;
    }

private:
    std::map<std::u16string_view, const GroupDefinition*> _groups; // by id, which no two have
};

/// The properties that are new or have another value than before.
PropertyMap news(const PropertyMap& before, const PropertyMap& now) {
    std::map<std::u16string_view, const PropertyValue*> known; // a lookup in the map itself takes the time of a walk
    for (const auto& entry : before)
        known.emplace(entry.first, &entry.second);
    std::vector<PropertyMap::Entry> entries;
    for (const auto& entry : now)
        if (const auto old = known.find(entry.first); old == known.end() || *old->second != entry.second)
            entries.push_back(entry);
    return PropertyMap(std::move(entries));
}

} // namespace

Watcher::Watcher(std::shared_ptr<Simulation> simulation)
    : DeviceWatcherBase(simulation->pool()), _simulation(std::move(simulation)) {}

void Watcher::startWatching() {
    callNow(_simulation->journal(), {"DeviceWatcher.Start"}, _simulation->scenario()->faults,
            [this] { _simulation->attach(std::static_pointer_cast<Watcher>(shared_from_this())); });
}

void Watcher::aboutToReport(Shared::DeviceEvent event, const std::u16string& deviceId) {
    switch (event) {
    case Shared::DeviceEvent::Added:
        return _simulation->journal().called({"DeviceWatcher.Added", deviceId});
    case Shared::DeviceEvent::Updated:
        return _simulation->journal().called({"DeviceWatcher.Updated", deviceId});
    case Shared::DeviceEvent::Removed:
        return _simulation->journal().called({"DeviceWatcher.Removed", deviceId});
    }
}

void Watcher::reportAll(const Scenario& scenario) {
    for (const GroupDefinition& group : scenario.groups)
        reportAdded(std::make_shared<Shared::DeviceInformationValue>(group.watched));
    reportEnumerationCompleted();
}

void Watcher::reportChanges(const Scenario& before, const Scenario& now) {
    using Update = Shared::DeviceInformationUpdateValue;
    const KnownGroups current(now);
    const KnownGroups former(before);
    for (const GroupDefinition& group : before.groups)
        if (current.findSame(group) == nullptr)
            reportRemoved(std::make_shared<Update>(group.watched.id, PropertyMap()));
    for (const GroupDefinition& group : now.groups) {
        const GroupDefinition* old = former.findSame(group);
        if (old == nullptr)
            reportAdded(std::make_shared<Shared::DeviceInformationValue>(group.watched));
        else if (old->text != group.text)
            reportUpdated(
                std::make_shared<Update>(group.watched.id, news(old->watched.properties, group.watched.properties)));
    }
}

} // namespace Platform::Simulated
