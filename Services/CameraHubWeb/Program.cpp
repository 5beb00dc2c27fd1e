#include "Services/CameraHubWeb/Program.h"

#include "Framework/CXX/System/DescriptorLimit.h"
#include "Framework/CXX/System/ProcessStart.h"
#include "Framework/CXX/System/ServiceNotification.h"
#include "Services/CameraHubWeb/Api/WebApi.h"
#include "Services/CameraHubWeb/Arguments.h"
#include "Services/CameraHubWeb/Http/Door.h"
#include "Services/CameraHubWeb/Http/HostNames.h"
#include "Services/CameraHubWeb/Http/HttpServer.h"
#include "Services/CameraHubWeb/Http/Router.h"
#include "Services/CameraHubWeb/Page/PageFiles.h"
#include "Services/CameraHubWeb/PageRoutes.h"
#include "Services/CameraHubWeb/TokenFile.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace CameraHubWeb {
namespace {

enum ExitCode { Done = 0, NotStarted = 1, Usage = 2 };

/// It answers at once where it is there, and is not busy with a still.
constexpr std::chrono::seconds forTheHubAtTheStart(2);

constexpr std::size_t bytesOfMebibyte = std::size_t(1024) * 1024;

WebApi::Settings apiSettings(const Arguments& arguments) {
    WebApi::Settings settings;
    settings.hub.address = arguments.hub;
    settings.hub.idleTime = arguments.idleTime;
    settings.keptStills = arguments.keptStills;
    settings.keptBytes = arguments.keptMemory * bytesOfMebibyte;
    return settings;
}

HttpServer::Settings serverSettings(const Arguments& arguments) {
    HttpServer::Settings settings;
    settings.address = arguments.address;
    settings.port = arguments.port;
    if (arguments.tls)
        settings.tls = std::make_shared<const TlsFiles>(*arguments.tls);
    settings.limits.connections = arguments.connections;
    return settings;
}

std::string addressText(const Arguments& arguments, std::uint16_t port) {
    const bool isVersion6 = arguments.address.find(':') != std::string::npos;
    return std::string(arguments.tls ? "https" : "http") + "://" +
           (isVersion6 ? "[" + arguments.address + "]" : arguments.address) + ":" + std::to_string(port) + "/";
}

std::string textOf(const PageFile& file) { return {file.content.begin(), file.content.end()}; }

Door::Settings doorSettings(const Arguments& arguments) {
    Door::Settings settings;
    settings.hosts = machineNames();
    settings.hosts.insert(settings.hosts.end(), arguments.names.begin(), arguments.names.end());
    if (!arguments.tokenFile.empty())
        settings.token = readToken(arguments.tokenFile);
    if (const PageFile* const page = findPageFile("login.html"))
        settings.loginPage = textOf(*page);
    settings.isTls = arguments.tls.has_value();
    return settings;
}

/// Those that end the program: they are waited for, by this thread alone, as the others inherit that they are blocked.
sigset_t blockEndSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

void serve(const Arguments& arguments, const sigset_t& endSignals) {
    Door::Settings access = doorSettings(arguments);
    WebApi api(apiSettings(arguments));
    Router router;
    addPageRoutes(router);
    api.addRoutes(router);
    Door door(std::move(access), [&router](std::shared_ptr<HttpExchange> exchange) { router.handle(exchange); });
    api.waitForHub(forTheHubAtTheStart);
    const HttpServer server(serverSettings(arguments),
                            [&door](std::shared_ptr<HttpExchange> exchange) { door.handle(exchange); });
    (void)std::printf("camera-hub-web: %s\n", addressText(arguments, server.port()).c_str());
    (void)std::fflush(stdout);
    Halden::System::notifyReady();
    int signal = 0;
    sigwait(&endSignals, &signal);
}

int tell(const char* text, ExitCode code) {
    (void)std::fprintf(stderr, "camera-hub-web: %s\n", text);
    return code;
}

} // namespace

int runProgram(int count, const char* const* texts) {
    Halden::System::openMissingStreams();
    Halden::System::surviveFailedWrites();
    Halden::System::useAllDescriptors();
    const sigset_t endSignals = blockEndSignals();
    try {
        if (const auto arguments = parseArguments(count, texts))
            serve(*arguments, endSignals);
        return Done;
    } catch (const UsageError& error) {
        return tell(error.what(), Usage);
    } catch (const std::exception& error) {
        return tell(error.what(), NotStarted);
    }
}

} // namespace CameraHubWeb
