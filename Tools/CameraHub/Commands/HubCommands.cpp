#include "Tools/CameraHub/Commands/HubCommands.h"

#include "Tools/CameraHub/Terminal/ExitCode.h"
#include "Tools/Text/DurationText.h"

namespace CommandLine {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr std::chrono::seconds lookInterval(1); // at whether the hub is still there

/// An id that no image has.
constexpr auto noImage = "00000000-0000-0000-0000-000000000000";

bool answersAtImagePort(CameraHub::CameraHubClient& client) {
    try {
        client.fetch(noImage);
    } catch (const CameraHub::ImageGone&) {
        return true;
    }
    return false;
}

} // namespace

void version(const Session& session) {
    CameraHub::CameraHubClient client = session.connect();
    const std::string hub = client.version();
    if (!session.options().isJson)
        return Session::print("Camera Hub " + hub + " at " + session.options().address.host + ", camera-hub " +
                              PROGRAM_VERSION + "\n");
    Json::Value result(Json::objectValue);
    result["hub"] = hub;
    result["program"] = PROGRAM_VERSION;
    Session::printJson(result);
}

void diagnostics(const Session& session, const DiagnosticsOptions& options) {
    CameraHub::CameraHubClient client = session.connect();
    try {
        client.redirectDiagnostics(options.folder);
    } catch (const CameraHub::MethodFailed&) {
        const std::string inside =
            options.folder + (options.folder.ends_with('/') ? "" : "/") + "LarkspurWindowsCameraHub";
        throw Failure(ExitCode::Refused, "the hub cannot write there: make " + inside + "/logs and " + inside +
                                             "/Traces on its machine, and let the hub's user write in them");
    }
    if (session.options().isJson) {
        Json::Value result(Json::objectValue);
        result["folder"] = options.folder;
        Session::printJson(result);
    }
    session.note("the hub's logs go to " + options.folder + " until Ctrl-C");
    for (;;) {
        session.interruption().waitUntil(steady_clock::now() + lookInterval);
        client.version(); // throws when the hub has gone, and the redirection with it
    }
}

void health(const Session& session, const HealthOptions& options) {
    const steady_clock::time_point start = steady_clock::now();
    Interruption::limitTo(options.timeout);
    CameraHub::CameraHubClient client = session.connect(longestDuration);
    const Progress progress = session.waitFor("an answer of the hub");
    const std::string hub = client.version();
    const std::size_t cameras = client.discover().size();
    if (!answersAtImagePort(client))
        throw Failure(ExitCode::Refused, "the port for images gives one that nobody took: another program is there");
    const auto time = std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
    if (!session.options().isJson)
        return Session::print("healthy: Camera Hub " + hub + ", cameras: " + std::to_string(cameras) +
                              ", answered within " + durationText(time) + "\n");
    Json::Value result(Json::objectValue);
    result["hub"] = hub;
    result["cameras"] = Json::UInt64(cameras);
    result["milliseconds"] = Json::Int64(time.count());
    Session::printJson(result);
}

} // namespace CommandLine
