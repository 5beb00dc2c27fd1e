#include "Platform/Simulated/Scenario/ScenarioReader.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/Guid.h"
#include "Platform/Simulated/Scenario/CameraReader.h"
#include "Platform/Simulated/Scenario/FaultsReader.h"
#include "Platform/Simulated/Scenario/JsonObjectReader.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <utility>

namespace Platform::Simulated {
namespace {

/// One of the names, which count from 0, or a number.
template <typename Enumeration>
Enumeration readEnumeration(const JsonPlace& place, std::initializer_list<const char*> names) {
    if (!place.isText())
        return static_cast<Enumeration>(place.asInt());
    const auto found = std::find(names.begin(), names.end(), place.asUtf8());
    if (found == names.end()) {
        std::string known;
        for (const char* name : names)
            known.append(known.empty() ? "" : ", ").append(name);
        place.raise("must be a number or one of " + known);
    }
    return static_cast<Enumeration>(found - names.begin());
}

PropertyMap readProperties(const JsonPlace& json) {
    JsonObjectReader reader(json); // for its check that this is an object; any member will do
    std::vector<PropertyMap::Entry> entries;
    for (const std::string& name : json.value().getMemberNames()) {
        std::u16string text = json.member(name).asText();
        PropertyValue value = text;
        if (const std::optional<Guid> guid = guidFromText(Halden::toUtf8(text)))
            value = *guid;
        entries.emplace_back(Halden::toUtf16(name), std::move(value));
    }
    return PropertyMap(std::move(entries));
}

EnclosureLocation readEnclosure(const JsonPlace& json) {
    EnclosureLocation enclosure;
    JsonObjectReader reader(json);
    reader.optional("panel", [&](const JsonPlace& place) { enclosure.Panel = static_cast<Panel>(place.asInt()); });
    reader.readBool("inDock", enclosure.InDock);
    reader.readBool("inLid", enclosure.InLid);
    reader.finish();
    return enclosure;
}

Shared::DeviceDescription readDevice(const JsonPlace& json) {
    Shared::DeviceDescription device;
    device.kind = DeviceInformationKind::DeviceInterface;
    JsonObjectReader reader(json);
    device.id = reader.require("id").asText();
    reader.readText("name", device.name);
    reader.optional("kind",
                    [&](const JsonPlace& place) { device.kind = static_cast<DeviceInformationKind>(place.asInt()); });
    reader.optional("enclosure", [&](const JsonPlace& place) {
        if (!place.isNull())
            device.enclosure = readEnclosure(place);
    });
    reader.optional("properties", [&](const JsonPlace& place) { device.properties = readProperties(place); });
    reader.finish();
    return device;
}

std::vector<FormatDefinition> readFormats(const JsonPlace& json) {
    std::vector<FormatDefinition> formats;
    for (const JsonPlace& item : json.asList()) {
        FormatDefinition format;
        format.FrameRate = 30.0;
        format.Subtype = u"NV12";
        JsonObjectReader reader(item);
        format.Width = reader.require("width").asUnsigned();
        format.Height = reader.require("height").asUnsigned();
        reader.readDouble("frameRate", format.FrameRate);
        reader.readText("subtype", format.Subtype);
        reader.finish();
        formats.push_back(std::move(format));
    }
    return formats;
}

SourceDefinition readSource(const JsonPlace& json) {
    SourceDefinition source;
    JsonObjectReader reader(json);
    source.id = reader.require("id").asText();
    reader.optional("streamType", [&](const JsonPlace& place) {
        source.streamType = readEnumeration<MediaStreamType>(place, {"VideoPreview", "VideoRecord", "Audio", "Photo"});
    });
    reader.optional("kind", [&](const JsonPlace& place) {
        source.kind =
            readEnumeration<MediaFrameSourceKind>(place, {"Custom", "Color", "Infrared", "Depth", "Audio", "Image"});
    });
    reader.readText("profileId", source.profileId);
    source.device = readDevice(reader.require("device"));
    reader.optional("profiles", [&](const JsonPlace& place) { source.profiles = readFormats(place); });
    source.formats = source.profiles;
    reader.optional("formats", [&](const JsonPlace& place) { source.formats = readFormats(place); });
    reader.readBool("sourceInfo2", source.sourceInfo2);
    reader.finish();
    return source;
}

std::string canonicalText(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

GroupDefinition readGroup(const JsonPlace& json) {
    GroupDefinition group;
    JsonObjectReader reader(json);
    group.id = reader.require("id").asText();
    reader.readText("displayName", group.displayName);
    reader.optional("faults", [&](const JsonPlace& place) { group.faults = readFaults(place, FaultPlace::Group); });
    reader.optional("sources", [&](const JsonPlace& place) {
        for (const JsonPlace& source : place.asList())
            group.sources.push_back(readSource(source));
    });
    group.watched.id = group.id;
    group.watched.name = group.displayName;
    group.watched.kind = DeviceInformationKind::DeviceInterface;
    reader.optional("watched", [&](const JsonPlace& place) { group.watched = readDevice(place); });
    reader.finish();
    group.text = canonicalText(json.value());
    return group;
}

/// Two groups of one id could not be told apart when the file changes.
std::vector<GroupDefinition> readGroups(const JsonPlace& json) {
    std::vector<GroupDefinition> groups;
    std::set<std::u16string> ids;
    for (const JsonPlace& item : json.asList()) {
        GroupDefinition group = readGroup(item);
        if (!ids.insert(group.id).second)
            item.member("id").raise("another group has this id");
        groups.push_back(std::move(group));
    }
    return groups;
}

std::vector<NodeDefinition> readNodes(const JsonPlace& json) {
    std::vector<NodeDefinition> nodes;
    for (const JsonPlace& item : json.asList()) {
        NodeDefinition node;
        JsonObjectReader reader(item);
        node.id = reader.require("id").asText();
        reader.optional("properties", [&](const JsonPlace& place) { node.properties = readProperties(place); });
        reader.finish();
        nodes.push_back(std::move(node));
    }
    return nodes;
}

std::map<std::u16string, CameraDefinition> readCameras(const JsonPlace& json, const std::filesystem::path& folder) {
    JsonObjectReader reader(json); // for its check that this is an object; any member will do
    std::map<std::u16string, CameraDefinition> cameras;
    for (const std::string& id : json.value().getMemberNames())
        cameras.emplace(Halden::toUtf16(id), readCamera(json.member(id), folder));
    return cameras;
}

Json::Value parseJson(const std::string& text, const std::filesystem::path& file) {
    Json::Value root;
    const JsonPlace place(root, file.native());
    if (!text.empty() && Halden::toUtf16(text).empty())
        place.raise("is not UTF-8 text");
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    bool parsed = false;
    try {
        parsed = reader->parse(text.data(), text.data() + text.size(), &root, &errors);
    } catch (const Json::Exception& error) { // nesting beyond the library's limit
        errors = error.what();
    }
    if (!parsed) {
        // One line for people, whatever the library writes.
        std::replace(errors.begin(), errors.end(), '\n', ' ');
        place.raise("is no JSON: " + errors);
    }
    return root;
}

} // namespace

Scenario readScenario(const std::string& text, const std::filesystem::path& file) {
    const Json::Value root = parseJson(text, file);
    const std::filesystem::path folder = file.parent_path();
    Scenario scenario;
    JsonObjectReader reader(JsonPlace(root, file.native()));
    reader.optional("groups", [&](const JsonPlace& place) { scenario.groups = readGroups(place); });
    reader.optional("deviceNodes", [&](const JsonPlace& place) { scenario.deviceNodes = readNodes(place); });
    reader.optional("containers", [&](const JsonPlace& place) { scenario.containers = readNodes(place); });
    reader.optional("cameras", [&](const JsonPlace& place) { scenario.cameras = readCameras(place, folder); });
    reader.optional("faults", [&](const JsonPlace& place) { scenario.faults = readFaults(place, FaultPlace::Top); });
    reader.optional("journal", [&](const JsonPlace& place) {
        if (const std::string name = place.asUtf8(); !name.empty())
            scenario.journal = folder / name;
    });
    reader.finish();
    for (std::size_t i = 0; i < scenario.groups.size(); ++i)
        scenario.groupOfWatched.emplace(scenario.groups[i].watched.id, i);
    return scenario;
}

Scenario builtInScenario() {
    return readScenario(R"({
        "groups": [{
            "id": "simulated-camera-group", "displayName": "Simulated Camera",
            "watched": {"id": "simulated-camera", "name": "Simulated Camera"},
            "sources": [{
                "id": "simulated-camera-source", "profileId": "simulated-camera-profile",
                "device": {
                    "id": "simulated-camera", "name": "Simulated Camera",
                    "properties": {
                        "System.Devices.DeviceInstanceId": "simulated-camera-node",
                        "System.Devices.ContainerId": "{5d8f6d0a-6a0c-4b7e-9a53-2f1c8e7b4d10}"
                    }
                },
                "profiles": [{"width": 1920, "height": 1080}]
            }]
        }],
        "deviceNodes": [{
            "id": "simulated-camera-node", "properties": {"System.Devices.DeviceManufacturer": "Camera Hub"}
        }],
        "containers": [{
            "id": "{5d8f6d0a-6a0c-4b7e-9a53-2f1c8e7b4d10}",
            "properties": {"System.Devices.ModelName": "Simulated Camera"}
        }],
        "cameras": {
            "simulated-camera": {"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "value": -6}}
        }
    })",
                        "built-in scenario");
}

} // namespace Platform::Simulated
