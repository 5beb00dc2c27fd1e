#include "Platform/Simulated/Watcher.h"

#include "Platform/Simulated/World/JournaledCall.h"
#include "Platform/Simulated/World/Simulation.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace Platform::Simulated {
namespace {

const GroupDefinition* findSame(const Scenario& scenario, const GroupDefinition& group) {
    const auto found = std::find_if(scenario.groups.begin(), scenario.groups.end(), [&](const auto& other) {
        return other.id == group.id && other.watched.id == group.watched.id;
    });
    return found == scenario.groups.end() ? nullptr : &*found;
}

/// The properties that are new or have another value than before.
PropertyMap news(const PropertyMap& before, const PropertyMap& now) {
    std::vector<PropertyMap::Entry> entries;
    for (const auto& entry : now)
        if (!before.HasKey(entry.first) || before.Lookup(entry.first) != entry.second)
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
    for (const GroupDefinition& group : before.groups)
        if (findSame(now, group) == nullptr)
            reportRemoved(std::make_shared<Update>(group.watched.id, PropertyMap()));
    for (const GroupDefinition& group : now.groups) {
        const GroupDefinition* old = findSame(before, group);
        if (old == nullptr)
            reportAdded(std::make_shared<Shared::DeviceInformationValue>(group.watched));
        else if (old->text != group.text)
            reportUpdated(
                std::make_shared<Update>(group.watched.id, news(old->watched.properties, group.watched.properties)));
    }
}

} // namespace Platform::Simulated
