#include "Tests/Support/SimulatedHub.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Platform/Shared/DeviceInformationValue.h"
#include "Platform/Simulated/SimulatedPlatform.h"

#include <json/json.h>

#include <clocale>
#include <filesystem>

namespace {

std::string argumentsOf(const JournalLine& line) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return line.json.isMember("args") ? Json::writeString(builder, line.json["args"]) : "";
}

} // namespace

Platform::DeviceInformation deviceWithId(const std::string& id) {
    return std::make_shared<Platform::Shared::DeviceInformationValue>(
        Platform::Shared::DeviceDescription{Halden::toUtf16(id), {}, {}, {}, {}});
}

SimulatedHub::SimulatedHub() {
    std::setlocale(LC_ALL, "C.UTF-8"); // as the hub does, first of all
    useScenario(R"("groups": [])");
}

SimulatedHub::~SimulatedHub() { Platform::setCameraPlatformFactory(nullptr); }

void SimulatedHub::useScenario(const std::string& members) {
    Platform::setCameraPlatformFactory(nullptr);
    std::filesystem::remove(_scenario.journal());
    _scenario.write(textOf(members));
    Platform::setCameraPlatformFactory(
        [file = _scenario.path()] { return Platform::Simulated::createSimulatedPlatform(file); });
}

void SimulatedHub::changeScenario(const std::string& members) const { _scenario.replace(textOf(members)); }

std::vector<std::string> SimulatedHub::lines(const std::string& logger) const {
    std::vector<std::string> found;
    for (const LogRecord& record : _log.records())
        if (record.logger == logger)
            found.push_back(record.level + " " + record.message);
    return found;
}

std::vector<std::string> SimulatedHub::linesOf(const std::string& level) const {
    std::vector<std::string> found;
    for (const std::string& line : lines())
        if (line.starts_with(level + " "))
            found.push_back(line.substr(level.size() + 1));
    return found;
}

std::vector<std::string> SimulatedHub::calls() const {
    std::vector<std::string> found;
    for (const JournalLine& line : _journal.lines())
        if (!line.hasEnded())
            found.push_back(line.json.isMember("args") ? line.call + " " + argumentsOf(line) : line.call);
    return found;
}

std::vector<std::string> SimulatedHub::callsOf(const std::string& call) const {
    std::vector<std::string> found;
    for (const JournalLine& line : _journal.linesOf(call))
        if (!line.hasEnded())
            found.push_back(argumentsOf(line));
    return found;
}

std::string SimulatedHub::textOf(const std::string& members) {
    return R"({"journal": "journal.txt", )" + members + "}";
}
