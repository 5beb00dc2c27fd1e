#include "Framework/CXX/Network/EpollDispatcher.h"
#include "Framework/CXX/System/DescriptorLimit.h"
#include "Framework/CXX/System/ProcessStart.h"
#include "Platform/Interface/CameraPlatform.h"
#include "Services/CameraTestDriver/TestDriverMain.h"
#include "Services/LarkspurWindowsCameraHub/CreateCameraPlatform.h"
#include "Services/LarkspurWindowsCameraHub/Listeners.h"
#include "Services/LarkspurWindowsCameraHub/ServiceParameters.h"
#include "Services/LarkspurWindowsCameraHub/SignsOfLife.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <QCoreApplication>
#include <clocale>
#include <cstring>
#include <exception>
#include <iostream>
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
    Halden::System::openMissingStreams();
    Halden::System::surviveFailedWrites();
    Halden::System::keepFreedMemory();
    useNeutralLocale();
    Platform::setCameraPlatformFactory(createCameraPlatform);

    if (argc > 1 && std::strcmp(argv[1], "--debug") == 0)
        testDriverMain();

    if (!initializeDiagnosticsAndLogging(applicationName(), applicationVersion())) {
        std::cout << "Failed to initialize diagnostics and logging.\n" << std::flush;
        return 1;
    }
    const DiagnosticsShutdown shutdownOnTheWayOut;

    if (isSimulatedCrashModeEnabled())
        simulateCrash();

    LOG4CXX_INFO(serviceLogger(), "Larkspur Windows Camera Hub started.  Waiting for Client connections...");
    // It is the application object's from then on, which the analyzer does not see.
    QCoreApplication::setEventDispatcher(new EpollDispatcher);
    QCoreApplication application(argc, argv); // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks)
    // The object has just taken over the user's.
    useNeutralLocale();

    Halden::System::useAllDescriptors(); // each connection is one
    const Listeners listeners(rpcPort, httpPort, &application);
    const SignsOfLife signsOfLife(listeners);

    // In no try block: an exception that leaves a slot ends the process.
    return QCoreApplication::exec();
}
