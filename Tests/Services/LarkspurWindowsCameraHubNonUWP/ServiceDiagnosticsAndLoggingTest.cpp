#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include "Framework/CXX/Common/RunCatch.h"
#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"
#include "Tests/Support/ChildProcess.h"

#include <log4cxx/consoleappender.h>
#include <unistd.h>

#include <csignal>

namespace {

class ServiceDiagnosticsAndLoggingTest : public DiagnosticsFixture {
protected:
    ~ServiceDiagnosticsAndLoggingTest() override { shutdownDiagnosticsAndLogging(); }

    static bool initialize() { return initializeDiagnosticsAndLogging(applicationName(), applicationVersion()); }

    std::filesystem::path currentRun() const { return getDiagnosticsFolderUtf8(); }

    std::filesystem::path output() const { return root() / "output"; }

    static std::size_t consolesOf(const log4cxx::LoggerPtr& logger) {
        std::size_t consoles = 0;
        for (const log4cxx::AppenderPtr& appender : logger->getAllAppenders())
            consoles += std::dynamic_pointer_cast<log4cxx::ConsoleAppender>(appender) ? 1 : 0;
        return consoles;
    }
};

TEST_F(ServiceDiagnosticsAndLoggingTest, ThereIsNoFolderBeforeTheStartAndAfterTheEnd) {
    EXPECT_EQ(getDiagnosticsFolderUtf8(), "");
    ASSERT_TRUE(initialize());
    EXPECT_EQ(currentRun(), allRuns() / *runNames().begin());
    shutdownDiagnosticsAndLogging();
    EXPECT_EQ(getDiagnosticsFolderUtf8(), "");
}

TEST_F(ServiceDiagnosticsAndLoggingTest, AStartMakesACrashFolderAndSaysThatTheConsoleIsOff) {
    testing::internal::CaptureStdout();
    const bool initialized = initialize();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Console logging is disabled.\n");
    ASSERT_TRUE(initialized);
    EXPECT_TRUE(std::filesystem::is_directory(currentRun() / "Crash"));
    EXPECT_EQ(consolesOf(serviceLogger()), 0U);
}

TEST_F(ServiceDiagnosticsAndLoggingTest, CrashHandlersAreInPlaceBetweenStartAndEnd) {
    const auto handlerOfSegv = [] {
        struct sigaction action{};
        sigaction(SIGSEGV, nullptr, &action);
        return action.sa_sigaction;
    };
    const auto before = handlerOfSegv();
    ASSERT_TRUE(initialize());
    EXPECT_NE(handlerOfSegv(), before);
    shutdownDiagnosticsAndLogging();
    EXPECT_EQ(handlerOfSegv(), before);
}

TEST_F(ServiceDiagnosticsAndLoggingTest, LinesReachTheFilesOfTheirLoggers) {
    ASSERT_TRUE(initialize());
    LOG4CXX_INFO(serviceLogger(), "of the service");
    LOG4CXX_WARN(communicationLogger(), "of the communication");
    const std::filesystem::path logs = currentRun() / "logs";
    for (const char* const file : {"DEFAULT.log", "PRODUCT.log"}) {
        EXPECT_NE(readFile(logs / file).find("INFO   LarkspurWindowsCameraHub.Service - of the service\n"),
                  std::string::npos)
            << file;
    }
    for (const char* const file : {"DEFAULT.log", "PRODUCT.log", "DEVICE.log"}) {
        EXPECT_NE(
            readFile(logs / file).find("WARN   LarkspurWindowsCameraHub.Device.Communication - of the communication\n"),
            std::string::npos)
            << file;
    }
    EXPECT_EQ(readFile(logs / "DEVICE.log").find("of the service"), std::string::npos);
    EXPECT_EQ(readFile(logs / "TIMING.log"), "");
}

TEST_F(ServiceDiagnosticsAndLoggingTest, AnUnusableDataFolderMakesTheStartFail) {
    const ScopedEnvironment variable("CAMERA_HUB_COMMON_DATA", root() / "missing");
    EXPECT_FALSE(initialize());
    EXPECT_EQ(getDiagnosticsFolderUtf8(), "");
}

TEST_F(ServiceDiagnosticsAndLoggingTest, AFailureOfCrashRecordingAloneFailsAndIsLogged) {
    // A name that is too long for crash records, though not for folders.
    const std::string name(230, 'x');
    EXPECT_FALSE(initializeDiagnosticsAndLogging(name, "1"));
    ASSERT_NE(getDiagnosticsFolderUtf8(), "");
    EXPECT_NE(readFile(currentRun() / "logs" / "DEFAULT.log")
                  .find("ERROR  LarkspurWindowsCameraHub.Service - Failed initializing crash dump recording!\n"),
              std::string::npos);
    unsetenv((std::string(230, 'X') + "_LOG_DIR").c_str());
}

TEST_F(ServiceDiagnosticsAndLoggingTest, TheFolderOfARunThatHasGoneThrows) {
    ASSERT_TRUE(initialize());
    std::filesystem::remove_all(currentRun());
    EXPECT_THROW(getDiagnosticsFolderUtf8(), Halden::HaldenException);
}

TEST_F(ServiceDiagnosticsAndLoggingTest, WithADebuggerTheConsoleTakesTheLogAndCrashesAreNotRecorded) {
    const int result = runInChild([this] {
        ASSERT_TRUE(letParentTrace());
        sendStandardOutputTo(output());
        ASSERT_TRUE(initialize());
        LOG4CXX_TRACE(serviceLogger(), "of the service");
        LOG4CXX_TRACE(deviceLogger(), "of the device");
        EXPECT_FALSE(std::filesystem::exists(currentRun() / "Crash"));
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(readFile(output()), "TRACE - of the service\nTRACE - of the device\n");
}

TEST_F(ServiceDiagnosticsAndLoggingTest, WithADebuggerARepeatedStartRepeatsTheLinesOfLoggersThatAreNotConfigured) {
    const int result = runInChild([this] {
        ASSERT_TRUE(letParentTrace());
        sendStandardOutputTo(output());
        ASSERT_TRUE(initialize());
        ASSERT_TRUE(initialize());
        EXPECT_EQ(consolesOf(serviceLogger()), 2U);
        EXPECT_EQ(consolesOf(deviceLogger()), 1U); // has a line in the configuration, which drops the earlier one
    });
    EXPECT_EQ(result, 0);
}

TEST_F(ServiceDiagnosticsAndLoggingTest, TheConsoleLevelIsThatOfTheServiceAndTheDevice) {
    setConsoleLevel(log4cxx::Level::getWarn());
    EXPECT_EQ(serviceLogger()->getLevel(), log4cxx::Level::getWarn());
    EXPECT_EQ(deviceLogger()->getLevel(), log4cxx::Level::getWarn());
    EXPECT_EQ(consolesOf(serviceLogger()), 1U);
    EXPECT_EQ(consolesOf(deviceLogger()), 1U);
    setConsoleLogging(serviceLogger(), log4cxx::Level::getDebug());
    EXPECT_EQ(serviceLogger()->getLevel(), log4cxx::Level::getDebug());
    EXPECT_EQ(consolesOf(serviceLogger()), 2U);
    serviceLogger()->removeAllAppenders();
    deviceLogger()->removeAllAppenders();
    serviceLogger()->setLevel(nullptr);
    deviceLogger()->setLevel(nullptr);
}

TEST_F(ServiceDiagnosticsAndLoggingTest, AStartAfterOneThatWasKilledWorks) {
    for (int kill = 0; kill < 5; ++kill) {
        const int result = runInChild([kill] {
            initialize();
            for (int line = 0; line < kill * 10; ++line)
                LOG4CXX_INFO(serviceLogger(), "a line");
            raise(SIGKILL);
        });
        EXPECT_EQ(result, -SIGKILL);
        ASSERT_TRUE(initialize());
        LOG4CXX_INFO(serviceLogger(), "here again");
        EXPECT_NE(readFile(currentRun() / "logs" / "DEFAULT.log").find("here again"), std::string::npos);
    }
}

} // namespace
