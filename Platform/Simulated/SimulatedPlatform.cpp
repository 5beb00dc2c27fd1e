#include "Platform/Simulated/SimulatedPlatform.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/PlatformBase.h"
#include "Platform/Shared/PlatformError.h"
#include "Platform/Simulated/Capture.h"
#include "Platform/Simulated/Scenario/IgnoringCase.h"
#include "Platform/Simulated/Scenario/ScenarioReader.h"
#include "Platform/Simulated/SourceGroup.h"
#include "Platform/Simulated/Watcher.h"
#include "Platform/Simulated/World/JournaledCall.h"
#include "Platform/Simulated/World/ScenarioWatcher.h"
#include "Platform/Simulated/World/Simulation.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace Platform::Simulated {
namespace {

const std::u16string cameraSelector = u"System.Devices.InterfaceClass:=\"SimulatedCameraSourceGroup\"";

class SimulatedPlatform final : public Shared::PlatformBase {
public:
    SimulatedPlatform(std::shared_ptr<Simulation> simulation, std::unique_ptr<ScenarioWatcher> scenarioWatcher)
        : PlatformBase(simulation->pool()), _simulation(std::move(simulation)),
          _scenarioWatcher(std::move(scenarioWatcher)) {}

    std::u16string GetDeviceSelector() override;
    DeviceWatcher CreateWatcher(const std::u16string& selector) override;
    IAsyncOperation<DeviceInformation> CreateFromIdAsync(const std::u16string& id,
                                                         const std::vector<std::u16string>& additionalProperties,
                                                         DeviceInformationKind kind) override;
    IAsyncOperation<MediaFrameSourceGroup> FromIdAsync(const std::u16string& id) override;
    IAsyncOperation<VectorView<MediaFrameSourceGroup>> FindAllAsync() override;
    MediaCapture CreateMediaCapture() override { return std::make_shared<Capture>(_simulation); }

private:
    /// Asynchronous operations that belong to no camera do not wait for each other.
    template <typename T, typename Work>
    IAsyncOperation<T> callOnItsOwn(JournalCall call, const Faults& faults, Work work) {
        return callAsync<T>(_simulation, *Shared::Strand::create(_simulation->pool()), std::move(call), faults,
                            std::move(work));
    }

    const std::shared_ptr<Simulation> _simulation;
    const std::unique_ptr<ScenarioWatcher> _scenarioWatcher; // null without a file
};

std::u16string SimulatedPlatform::GetDeviceSelector() {
    return callNow(_simulation->journal(), {"MediaFrameSourceGroup.GetDeviceSelector"}, _simulation->scenario()->faults,
                   [] { return cameraSelector; });
}

DeviceWatcher SimulatedPlatform::CreateWatcher(const std::u16string& selector) {
    constexpr const char* operation = "DeviceInformation.CreateWatcher";
    return callNow(_simulation->journal(), {operation}, _simulation->scenario()->faults, [&]() -> DeviceWatcher {
        if (selector != cameraSelector)
            throw Shared::platformError(operation, Halden::toUtf8(selector), winrt::result::invalidArgument,
                                        "Only camera source groups can be watched.");
        return std::make_shared<Watcher>(_simulation);
    });
}

const NodeDefinition* findNode(const Scenario& scenario, const std::u16string& id, DeviceInformationKind kind) {
    const bool isContainer = kind == DeviceInformationKind::DeviceContainer;
    if (!isContainer && kind != DeviceInformationKind::Device)
        return nullptr;
    const auto& nodes = isContainer ? scenario.containers : scenario.deviceNodes;
    const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const NodeDefinition& node) {
        return isContainer ? equalIgnoringCase(node.id, id) : node.id == id;
    });
    return found == nodes.end() ? nullptr : &*found;
}

IAsyncOperation<DeviceInformation>
SimulatedPlatform::CreateFromIdAsync(const std::u16string& id, const std::vector<std::u16string>& additionalProperties,
                                     DeviceInformationKind kind) {
    constexpr const char* operation = "DeviceInformation.CreateFromIdAsync";
    Json::Value names(Json::arrayValue);
    for (const std::u16string& name : additionalProperties)
        names.append(journalText(name));
    Json::Value arguments(Json::arrayValue);
    arguments.append(journalText(id));
    arguments.append(static_cast<int>(kind));
    arguments.append(std::move(names));
    return callOnItsOwn<DeviceInformation>(
        {operation, {}, nullptr, std::move(arguments)}, _simulation->scenario()->faults,
        [simulation = _simulation, id, kind]() -> DeviceInformation {
            const auto scenario = simulation->scenario();
            const NodeDefinition* node = findNode(*scenario, id, kind);
            if (node == nullptr)
                throw Shared::platformError(operation, Halden::toUtf8(id), winrt::result::notFound,
                                            "There is no such device.");
            return std::make_shared<Shared::DeviceInformationValue>(
                Shared::DeviceDescription{node->id, {}, kind, std::nullopt, node->properties});
        });
}

const GroupDefinition* findWatched(const Scenario& scenario, const std::u16string& deviceId) {
    const auto found = scenario.groupOfWatched.find(deviceId);
    return found == scenario.groupOfWatched.end() ? nullptr : &scenario.groups[found->second];
}

IAsyncOperation<MediaFrameSourceGroup> SimulatedPlatform::FromIdAsync(const std::u16string& id) {
    constexpr const char* operation = "MediaFrameSourceGroup.FromIdAsync";
    Json::Value arguments(Json::arrayValue);
    arguments.append(journalText(id));
    const auto scenario = _simulation->scenario();
    const GroupDefinition* known = findWatched(*scenario, id);
    return callOnItsOwn<MediaFrameSourceGroup>(
        {operation, {}, nullptr, std::move(arguments)}, known != nullptr ? known->faults : Faults(),
        [simulation = _simulation, id]() -> MediaFrameSourceGroup {
            const auto current = simulation->scenario();
            const GroupDefinition* group = findWatched(*current, id);
            if (group == nullptr)
                throw Shared::platformError(operation, Halden::toUtf8(id), winrt::result::notFound,
                                            "There is no such source group.");
            return std::make_shared<SourceGroup>(partOf(current, *group));
        });
}

IAsyncOperation<VectorView<MediaFrameSourceGroup>> SimulatedPlatform::FindAllAsync() {
    return callOnItsOwn<VectorView<MediaFrameSourceGroup>>(
        {"MediaFrameSourceGroup.FindAllAsync"}, _simulation->scenario()->faults, [simulation = _simulation] {
            const auto scenario = simulation->scenario();
            std::vector<MediaFrameSourceGroup> groups;
            groups.reserve(scenario->groups.size());
            for (const GroupDefinition& group : scenario->groups)
                groups.push_back(std::make_shared<SourceGroup>(partOf(scenario, group)));
            return VectorView<MediaFrameSourceGroup>(std::move(groups));
        });
}

void takeOver(Simulation& simulation, const std::string& text, const std::filesystem::path& file) {
    Scenario scenario = readScenario(text, file);
    try {
        simulation.takeOver(std::move(scenario));
    } catch (const winrt::hresult_error& error) { // only the journal can fail
        throw winrt::hresult_error(error.code(), Halden::toUtf16(file.native()) + u": journal: " + error.message());
    }
}

} // namespace

std::shared_ptr<CameraPlatform> createSimulatedPlatform(const std::filesystem::path& scenarioFile) {
    const auto simulation = std::make_shared<Simulation>();
    std::unique_ptr<ScenarioWatcher> watcher;
    if (scenarioFile.empty()) {
        simulation->takeOver(builtInScenario());
    } else {
        const std::filesystem::path file = std::filesystem::absolute(scenarioFile);
        watcher = std::make_unique<ScenarioWatcher>(
            file, [simulation, file](const std::string& text) { takeOver(*simulation, text, file); });
    }
    return std::make_shared<SimulatedPlatform>(simulation, std::move(watcher));
}

} // namespace Platform::Simulated
