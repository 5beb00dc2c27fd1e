#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/DiagnosticsFactories.h"
#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"
#include "Tests/Support/ChildProcess.h"

#include <log4cxx/logger.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace {

std::unique_ptr<HaldenDiagnostics> redirectTo(const std::filesystem::path& folder) {
    return createRedirectedDiagnostics(testAppName, testVersion, folder, nullptr);
}

class RedirectedDiagnosticsTest : public DiagnosticsFixture {};

TEST_F(RedirectedDiagnosticsTest, WriteBelowThePreparedFolder) {
    const std::filesystem::path folder = makeRedirectFolder("mine");
    const auto diagnostics = redirectTo(folder);
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(Halden::toUtf8(diagnostics->getRunFolder()), folder / "LarkspurWindowsCameraHub");
    EXPECT_EQ(Halden::toUtf8(diagnostics->getRunName()), "mine/LarkspurWindowsCameraHub");
    EXPECT_EQ(Halden::toUtf8(diagnostics->getBaseFolder()), root() / "client");
    LOG4CXX_INFO(log4cxx::Logger::getRootLogger(), "over here");
    const std::string log = readFile(folder / "LarkspurWindowsCameraHub" / "logs" / "DEFAULT.log");
    EXPECT_NE(log.find(" - over here\n"), std::string::npos) << log;
}

TEST_F(RedirectedDiagnosticsTest, MakeNoTraceAndPruneNothing) {
    for (int number = 10; number < 25; ++number) {
        std::filesystem::create_directories(root() / "client" / "Diagnostics" /
                                            ("2026-01-01_00-00-" + std::to_string(number)));
    }
    const auto diagnostics = redirectTo(makeRedirectFolder("mine"));
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(diagnostics->getDefaultTraceId(), "");
    EXPECT_EQ(diagnostics->getCurrentTraceId(), "");
    EXPECT_TRUE(std::filesystem::is_empty(Halden::toUtf8(diagnostics->getTracesFolder())));
    EXPECT_TRUE(std::filesystem::exists(root() / "client" / "Diagnostics" / "2026-01-01_00-00-10"));
    EXPECT_FALSE(std::filesystem::exists(allRuns()));
}

TEST_F(RedirectedDiagnosticsTest, AreConfiguredByTheOrdinaryFile) {
    ASSERT_NE(makeDiagnostics(), nullptr);
    const std::string text = readFile(propertiesFile()) + "log4j.logger.Extra=DEBUG\n";
    writeFile(propertiesFile(), text);
    ASSERT_NE(redirectTo(makeRedirectFolder("mine")), nullptr);
    EXPECT_EQ(readFile(propertiesFile()), text);
    EXPECT_TRUE(log4cxx::Logger::getLogger("Extra")->isDebugEnabled());
}

TEST_F(RedirectedDiagnosticsTest, AMissingFolderIsAFailureThatTouchesNoLogging) {
    const auto ordinary = makeDiagnostics();
    ASSERT_NE(ordinary, nullptr);
    EXPECT_EQ(redirectTo(root() / "client" / "Diagnostics" / "missing"), nullptr);
    LOG4CXX_INFO(log4cxx::Logger::getRootLogger(), "still here");
    EXPECT_NE(readFile(Halden::toUtf8(ordinary->getLogFolder()) + "/DEFAULT.log").find("still here"),
              std::string::npos);
}

TEST_F(RedirectedDiagnosticsTest, AMissingFolderStillMakesTheCommonFolders) {
    EXPECT_EQ(redirectTo(root() / "missing"), nullptr);
    EXPECT_TRUE(std::filesystem::is_directory(appFolder()));
    EXPECT_FALSE(std::filesystem::exists(propertiesFile()));
}

TEST_F(RedirectedDiagnosticsTest, AFileIsNoFolder) {
    std::filesystem::create_directories(root() / "Diagnostics");
    writeFile(root() / "Diagnostics" / "file", "");
    EXPECT_EQ(redirectTo(root() / "Diagnostics" / "file"), nullptr);
}

TEST_F(RedirectedDiagnosticsTest, TheTracesMustHaveBeenPrepared) {
    const std::filesystem::path folder = root() / "client" / "Diagnostics" / "mine";
    std::filesystem::create_directories(folder);
    EXPECT_EQ(redirectTo(folder), nullptr);
    // The logs need not: whoever opens a log file makes its folders.
    EXPECT_TRUE(std::filesystem::exists(folder / "LarkspurWindowsCameraHub" / "logs" / "DEFAULT.log"));
    EXPECT_FALSE(std::filesystem::exists(folder / "LarkspurWindowsCameraHub" / "Traces"));
}

TEST_F(RedirectedDiagnosticsTest, AFolderNamedDiagnosticsItselfWillDo) {
    const std::filesystem::path run = root() / "Diagnostics" / "LarkspurWindowsCameraHub";
    std::filesystem::create_directories(run / "Traces");
    const auto diagnostics = redirectTo(root() / "Diagnostics");
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(Halden::toUtf8(diagnostics->getRunFolder()), run);
}

TEST_F(RedirectedDiagnosticsTest, PathsBeyondAsciiAndOfAnyLengthAreTaken) {
    std::string name = "K\xC3\xA4se \xF0\x9F\x93\xB7";
    for (int part = 0; part < 3; ++part)
        name += "/" + std::string(200, 'x');
    const std::filesystem::path folder = makeRedirectFolder(name);
    const auto diagnostics = redirectTo(folder);
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_TRUE(std::filesystem::exists(folder / "LarkspurWindowsCameraHub" / "logs" / "DEVICE.log"));
}

// The log files of such a redirection are tried at the root of the file system: the child gets one of its own.
void redirectWithoutTheWordBelow(const std::filesystem::path& newRoot) {
    ASSERT_EQ(chroot(newRoot.c_str()), 0);
    ASSERT_EQ(chdir("/"), 0);
    setenv("CAMERA_HUB_COMMON_DATA", "/data", 1);
    ASSERT_NE(createDiagnostics(testAppName, testVersion, 10, nullptr), nullptr);
    const std::filesystem::path properties =
        "/data/Halden Imaging Group/Larkspur Windows Camera Hub 2.9/logging.properties";
    const std::string generated = readFile(properties);
    writeFile(properties, "# edited\n");
    EXPECT_EQ(redirectTo("/client"), nullptr);
    EXPECT_EQ(readFile(properties), generated);
    EXPECT_STREQ(std::getenv("LARKSPURWINDOWSCAMERAHUB_LOG_DIR"), "");
    LOG4CXX_INFO(log4cxx::Logger::getRootLogger(), "at the root");
    EXPECT_NE(readFile("/DEFAULT.log").find(" - at the root\n"), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists("/TIMING.log"));
}

TEST_F(RedirectedDiagnosticsTest, WithoutTheWordInThePathTheConfigurationIsMadeAnewAndTheLogsGoToTheRoot) {
    std::filesystem::create_directories(root() / "newroot" / "data");
    std::filesystem::create_directories(root() / "newroot" / "client");
    runInPrivateMounts([this] { redirectWithoutTheWordBelow(root() / "newroot"); });
}

} // namespace
