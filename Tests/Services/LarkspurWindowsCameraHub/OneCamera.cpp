#include "Tests/Services/LarkspurWindowsCameraHub/OneCamera.h"

#include "Framework/CXX/Common/Clock.h"
#include "Services/LarkspurWindowsCameraHub/CameraHelper.h"

#include <json/json.h>

#include <memory>

namespace {

std::string sourceOfDevice(const std::string& id, const std::string& streamType, const std::string& kind,
                           const std::string& device) {
    return R"({"id": ")" + id + R"(", "streamType": ")" + streamType + R"(", "kind": ")" + kind +
           R"(", "device": {"id": ")" + device + R"(", "name": "Cam"}, "profiles": [{"width": 32, "height": 24}]})";
}

/// The watcher reports the camera itself, so that the hub notices when it goes.
std::string groupOf(const std::string& id, const std::string& device, const std::string& sources) {
    return R"({"id": ")" + id + R"(", "displayName": "Group", "watched": {"id": ")" + device + R"("}, "sources": [)" +
           sources + "]}";
}

std::string joined(const std::vector<std::string>& texts) {
    std::string all;
    for (const std::string& text : texts)
        all += (all.empty() ? "" : ", ") + text;
    return all;
}

std::string compact(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

std::string describe(const JournalLine& line) {
    std::string text = line.device.empty() ? line.call : line.device + ": " + line.call;
    if (!line.control.empty())
        text += " " + line.control;
    if (line.json.isMember("args"))
        text += " " + compact(line.json["args"]);
    if (line.hasEnded())
        text += " ended";
    if (line.hasResult() && !line.json["result"].isNull())
        text += " = " + compact(line.json["result"]);
    if (line.hasError())
        text += " ! " + compact(line.json["error"]);
    return text;
}

} // namespace

std::string source(const std::string& id, const std::string& streamType, const std::string& kind) {
    return sourceOfDevice(id, streamType, kind, "D");
}

std::string sourcesOf(const std::vector<std::string>& sources) {
    return R"("groups": [)" + groupOf("G", "D", joined(sources)) + "]";
}

std::string oneCamera(const std::string& camera, const std::string& more) {
    return sourcesOf({source("S", "VideoPreview")}) + R"(, "cameras": {"D": )" + camera + "}" +
           (more.empty() ? "" : ", " + more);
}

std::string severalCameras(const std::vector<std::string>& devices, const std::string& camera) {
    std::vector<std::string> groups;
    std::vector<std::string> cameras;
    for (const std::string& device : devices) {
        groups.push_back(
            groupOf("G-" + device, device, sourceOfDevice("S-" + device, "VideoPreview", "Color", device)));
        cameras.push_back("\"" + device + "\": " + camera);
    }
    return R"("groups": [)" + joined(groups) + R"(], "cameras": {)" + joined(cameras) + "}";
}

std::string olderExposure(const std::string& more) {
    return R"({"exposure": {"supported": true, "min": -13, "max": 0, "step": 1, "value": -6)" +
           (more.empty() ? "" : ", " + more) + "}}";
}

std::string withMembers(const std::string& object, const std::string& members) {
    const std::string inside = object.substr(1, object.size() - 2);
    return "{" + inside + (inside.empty() ? "" : ", ") + members + "}";
}

std::string fault(const std::string& operation, const std::string& members) {
    return "\"" + operation + R"(": {"message": "It broke.", "code": -7)" + (members.empty() ? "" : ", " + members) +
           "}";
}

std::string withFaults(const std::string& camera, const std::string& faults) {
    return withMembers(camera, R"("faults": {)" + faults + "}");
}

FoundCamera OneCamera::found(const std::string& uid) {
    FoundCamera camera;
    camera.description.uid = uid;
    camera.description.name = "Cam";
    return camera;
}

void OneCamera::unplug() {
    const auto capture = CameraHelper::CreateMediaCapture(found());
    changeScenario(R"("groups": [])");
    ASSERT_TRUE(waitUntil([&] {
        try {
            capture->CameraStreamState();
            return false;
        } catch (const winrt::hresult_error&) {
            return true;
        }
    }));
}

std::vector<std::string> OneCamera::journalTexts() const {
    std::vector<std::string> texts;
    for (const JournalLine& line : journal().lines())
        texts.push_back(describe(line));
    return texts;
}

void OneCamera::forget() {
    log().clear();
    clock().clear();
    _linesForgotten = journal().lines().size();
}

std::vector<std::string> OneCamera::news() const {
    std::vector<std::string> texts = journalTexts();
    texts.erase(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(_linesForgotten));
    return texts;
}

std::shared_ptr<FakeClock> OneCamera::shortenTimeLimits(int divisor) {
    auto clock = std::make_shared<FakeClock>(FakeClock::returnAtOnce, divisor);
    Halden::setClockForTesting(clock);
    return clock;
}

void ServedCameras::start(const std::string& scenario, std::size_t cameras) {
    useScenario(scenario);
    server = std::make_shared<CameraServer>();
    ASSERT_TRUE(waitForCameras(cameras));
    forget();
}

bool ServedCameras::waitForCameras(std::size_t count) const {
    return waitUntil([&] { return server->discover().size() == count; });
}
