#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Network/HttpServer.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Services/CameraTestDriver/TestDriverMain.h"
#include "Services/LarkspurWindowsCameraHub/CreateCameraPlatform.h"
#include "Services/LarkspurWindowsCameraHub/PavoCameraServer.h"
#include "Services/LarkspurWindowsCameraHub/ServiceParameters.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <QCoreApplication>
#include <clocale>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <thread>

namespace {

constexpr quint16 rpcPort = 3141;
constexpr quint16 httpPort = 3142;

/// Numbers, dates and UTF-8 come out the same for every user.
void useNeutralLocale() { std::setlocale(LC_ALL, "C.UTF-8"); }

class SimulatedCrash : public std::exception {
public:
    const char* what() const noexcept override { return "simulated crash"; }
};

struct DiagnosticsShutdown {
    DiagnosticsShutdown() = default;
    ~DiagnosticsShutdown() { shutdownDiagnosticsAndLogging(); }
    DiagnosticsShutdown(const DiagnosticsShutdown&) = delete;
    DiagnosticsShutdown& operator=(const DiagnosticsShutdown&) = delete;
};

/// Dies on purpose, of an exception that nothing catches.
[[noreturn]] void simulateCrash() {
    std::this_thread::sleep_for(appThrottleInterval());
    LOG4CXX_INFO(serviceLogger(), "Simulated crash mode is enabled.  About to throw an unhandled exception...");
    throw SimulatedCrash();
}

} // namespace

int main(int argc, char* argv[]) {
    useNeutralLocale();
    Platform::setCameraPlatformFactory(createCameraPlatform);

    if (argc > 1 && std::strcmp(argv[1], "--debug") == 0)
        testDriverMain();

    if (!initializeDiagnosticsAndLogging(applicationName(), applicationVersion())) {
        std::cout << "Failed to initialize diagnostics and logging." << std::endl;
        return 1;
    }
    const DiagnosticsShutdown shutdownOnTheWayOut;

    if (isSimulatedCrashModeEnabled())
        simulateCrash();

    LOG4CXX_INFO(serviceLogger(), "Larkspur Windows Camera Hub started.  Waiting for Client connections...");
    QCoreApplication application(argc, argv);
    useNeutralLocale(); // the application object has just taken over the user's

    std::unique_ptr<PavoCameraServer> rpcServer;
    std::unique_ptr<HttpServer> httpServer;
    try {
        rpcServer = std::make_unique<PavoCameraServer>(rpcPort, &application);
        httpServer = std::make_unique<HttpServer>(httpPort, &application);
        const auto imageRoute = [&rpcServer](HttpRequest* request, HttpResponse* response) {
            rpcServer->handleImageRequest(request, response);
        };
        std::string pattern = "/res/";
        pattern += ".*";
        httpServer->addRoute(QString::fromLatin1(pattern.c_str()), imageRoute);
    } catch (const winrt::hresult_error& error) {
        LOG4CXX_ERROR(serviceLogger(), "CameraHub encountered an error: " << Halden::toUtf8(error.message()));
    } catch (const std::exception& error) {
        LOG4CXX_ERROR(serviceLogger(), "CameraHub encountered an error: " << error.what());
    } catch (...) {
        LOG4CXX_ERROR(serviceLogger(), "CameraHub encountered an unknown error");
    }

    // In no try block: an exception that leaves a slot ends the process.
    return QCoreApplication::exec();
}
