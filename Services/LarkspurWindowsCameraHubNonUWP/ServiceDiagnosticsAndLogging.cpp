#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/DiagnosticsFactories.h"
#include "Framework/CXX/System/DebuggerTest.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/UncaughtException.h"

#include <log4cxx/consoleappender.h>
#include <log4cxx/helpers/pool.h>
#include <log4cxx/simplelayout.h>

#include <iostream>
#include <memory>
#include <utility>

namespace {

std::unique_ptr<HaldenDiagnostics>& diagnostics() {
    static std::unique_ptr<HaldenDiagnostics> instance;
    return instance;
}

// The object before goes when the new one is there, and takes its crash recording with it.
bool replaceDiagnostics(std::unique_ptr<HaldenDiagnostics> made) {
    diagnostics() = std::move(made);
    if (!diagnostics() || !diagnostics()->isValid())
        return false;
    return initializeCrashRecordingAndConsoleLogging();
}

} // namespace

const std::string& applicationName() {
    static const std::string name = "Larkspur Windows Camera Hub";
    return name;
}

const std::string& applicationVersion() {
    static const std::string version = "2.9";
    return version;
}

log4cxx::LoggerPtr serviceLogger() {
    static const log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("LarkspurWindowsCameraHub.Service");
    return logger;
}

log4cxx::LoggerPtr deviceLogger() {
    static const log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("LarkspurWindowsCameraHub.Device");
    return logger;
}

log4cxx::LoggerPtr communicationLogger() {
    static const log4cxx::LoggerPtr logger =
        log4cxx::Logger::getLogger("LarkspurWindowsCameraHub.Device.Communication");
    return logger;
}

bool initializeDiagnosticsAndLogging(const std::string& appName, const std::string& version) {
    constexpr int keptRunFolders = 10; // the new one among them
    return replaceDiagnostics(createDiagnostics(appName, version, keptRunFolders, nullptr));
}

bool initializeRedirectedDiagnosticsAndLogging(const std::string& appName, const std::string& version,
                                               const std::string& folder) {
    return replaceDiagnostics(createRedirectedDiagnostics(appName, version, folder, nullptr));
}

bool initializeCrashRecordingAndConsoleLogging() {
    diagnostics()->describeUncaughtExceptionsWith(describeUncaughtException);
    const bool debugged = Halden::System::isDebuggerPresent();
    if (!debugged && !diagnostics()->installCrashRecording(true, 0)) {
        LOG4CXX_ERROR(serviceLogger(), "Failed initializing crash dump recording!");
        return false;
    }
    if (debugged)
        setConsoleLevel(log4cxx::Level::getTrace());
    else
        std::cout << "Console logging is disabled.\n" << std::flush;
    return true;
}

std::string getDiagnosticsFolderUtf8() {
    return diagnostics() ? Halden::toUtf8(diagnostics()->getRunFolder()) : std::string();
}

void shutdownDiagnosticsAndLogging() { diagnostics().reset(); }

void setConsoleLogging(log4cxx::LoggerPtr logger, const log4cxx::LevelPtr& level) {
    logger->setLevel(level);
    const auto appender = std::make_shared<log4cxx::ConsoleAppender>();
    appender->setLayout(std::make_shared<log4cxx::SimpleLayout>());
    log4cxx::helpers::Pool pool;
    appender->activateOptions(pool);
    logger->addAppender(appender);
}

void setConsoleLevel(const log4cxx::LevelPtr& level) {
    setConsoleLogging(serviceLogger(), level);
    setConsoleLogging(deviceLogger(), level);
}
