#include "Tests/Services/CameraTestDriver/DriverFixture.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Platform/Simulated/SimulatedPlatform.h"
#include "Services/CameraTestDriver/CameraListing.h"
#include "Services/CameraTestDriver/Images.h"
#include "Services/CameraTestDriver/TestDriverMain.h"

#include <json/json.h>

#include <algorithm>

namespace fs = std::filesystem;

namespace {

std::string currentTest() {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    return std::string(test->test_suite_name()) + " " + test->name();
}

std::string compact(const Json::Value& value) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, value);
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

} // namespace

std::string cameraGroup(const std::string& id, const std::string& name, int width, int height,
                        const std::string& members) {
    return R"({"id": ")" + id + R"( group", "displayName": "Group of )" + id + R"(", "sources": [{"id": ")" + id +
           R"( source", "device": {"id": ")" + id + R"(", "name": ")" + name + R"("}, "profiles": [{"width": )" +
           std::to_string(width) + R"(, "height": )" + std::to_string(height) + "}]" + members + "}]}";
}

DriverFixture::DriverFixture() {
    fs::remove_all(outputFolder());
    imageIds().clear();
}

DriverFixture::~DriverFixture() {
    Platform::setCameraPlatformFactory(nullptr);
    fs::remove_all(outputFolder());
}

void DriverFixture::useScenario(const std::string& members) {
    Platform::setCameraPlatformFactory(nullptr);
    _scenario.write(R"({"journal": "journal.txt", )" + members + "}");
    Platform::setCameraPlatformFactory(
        [file = _scenario.path()] { return Platform::Simulated::createSimulatedPlatform(file); });
}

void DriverFixture::useCamera(const std::string& hardware, int width, int height) {
    useScenario(R"("groups": [)" + cameraGroup("cam", cameraName(), width, height) + R"(], "cameras": {"cam": )" +
                hardware + "}");
}

DriverConnection DriverFixture::connectionTo(const std::string& id, const std::string& name) {
    DriverConnection connection;
    connection.camera.name = Halden::toUtf16(name);
    connection.camera.id = Halden::toUtf16(id);
    connection.camera.kind = 1;
    connection.mediaCapture = connectCamera(connection.camera);
    return connection;
}

std::string DriverFixture::session(const std::string& typed) {
    TypedConsole console(typed);
    try {
        EXPECT_EQ(testDriverMain(console), 0);
    } catch (const ConsoleFull&) {
        ADD_FAILURE() << "the driver did not leave";
    }
    return plain(console.text());
}

std::string DriverFixture::plain(std::string text) const {
    replaceAll(text, executableFolder().native(), "FOLDER");
    replaceAll(text, cameraName(), "Test Camera");
    constexpr std::size_t idSize = 38; // with its braces
    std::vector<std::string> ids;
    for (std::size_t at = text.find('{'); at != std::string::npos; at = text.find('{', at + 1)) {
        const std::string id = text.substr(at, idSize);
        const bool isId = id.size() == idSize && id.find_first_not_of("{}-0123456789abcdef") == std::string::npos;
        if (isId && id.back() == '}' && std::find(ids.begin(), ids.end(), id) == ids.end())
            ids.push_back(id);
    }
    for (std::size_t i = 0; i < ids.size(); ++i)
        replaceAll(text, ids[i], "{" + std::to_string(i + 1) + "}");
    return text;
}

std::vector<std::string> DriverFixture::changes() const {
    const auto isChange = [](const std::string& call) {
        return call.find("Control.TrySet") != std::string::npos || call.find("Control.Set") != std::string::npos;
    };
    std::vector<std::string> found;
    for (const JournalLine& line : JournalReader(_scenario.journal()).lines())
        if (!line.hasEnded() && isChange(line.call))
            found.push_back(line.call + " " + line.control + compact(line.json["args"]));
    return found;
}

std::vector<std::string> DriverFixture::calls(const std::string& name) const {
    std::vector<std::string> found;
    for (const JournalLine& line : JournalReader(_scenario.journal()).linesOf(name))
        if (!line.hasEnded())
            found.push_back(compact(line.json["args"]));
    return found;
}

std::string DriverFixture::cameraName() const { return "Camera of " + currentTest(); }

fs::path DriverFixture::executableFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

std::vector<std::string> DriverFixture::filesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}
