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

TEST_F(RedirectedDiagnosticsTest, AllFoldersMustHaveBeenPreparedAndNoneIsMade) {
    const std::filesystem::path folder = root() / "client" / "Diagnostics" / "mine";
    const std::filesystem::path run = folder / "LarkspurWindowsCameraHub";
    for (const std::filesystem::path& made : {folder, run, run / "logs"}) {
        std::filesystem::create_directories(made);
        EXPECT_EQ(redirectTo(folder), nullptr);
        EXPECT_TRUE(std::filesystem::is_empty(made)) << made;
    }
    std::filesystem::remove(run / "logs");
    std::filesystem::create_directory(run / "Traces");
    EXPECT_EQ(redirectTo(folder), nullptr);
    EXPECT_FALSE(std::filesystem::exists(run / "logs"));
    std::filesystem::create_directory(run / "logs");
    EXPECT_NE(redirectTo(folder), nullptr);
}

TEST_F(RedirectedDiagnosticsTest, AFolderThatIsNotPreparedTouchesNoLogging) {
    const auto ordinary = makeDiagnostics();
    ASSERT_NE(ordinary, nullptr);
    std::filesystem::create_directories(root() / "Diagnostics");
    EXPECT_EQ(redirectTo(root() / "Diagnostics"), nullptr);
    LOG4CXX_INFO(log4cxx::Logger::getRootLogger(), "still here");
    EXPECT_NE(readFile(Halden::toUtf8(ordinary->getLogFolder()) + "/DEFAULT.log").find("still here"),
              std::string::npos);
}

TEST_F(RedirectedDiagnosticsTest, AFolderNamedDiagnosticsItselfWillDo) {
    const std::filesystem::path run = root() / "Diagnostics" / "LarkspurWindowsCameraHub";
    std::filesystem::create_directories(run / "logs");
    std::filesystem::create_directories(run / "Traces");
    const auto diagnostics = redirectTo(root() / "Diagnostics");
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(Halden::toUtf8(diagnostics->getRunFolder()), run);
}

TEST_F(RedirectedDiagnosticsTest, ANameLikeAVariableIsAName) {
    for (const std::string name : {"${HOME}", "${LARKSPURWINDOWSCAMERAHUB_LOG_DIR}", "${", "$${$}{}"}) {
        const std::filesystem::path folder = makeRedirectFolder(name);
        ASSERT_NE(redirectTo(folder), nullptr);
        EXPECT_TRUE(std::filesystem::exists(folder / "LarkspurWindowsCameraHub" / "logs" / "DEFAULT.log")) << name;
    }
}

TEST_F(RedirectedDiagnosticsTest, APipeInPlaceOfALogFileIsNotWaitedFor) {
    const std::filesystem::path folder = makeRedirectFolder("mine");
    const std::filesystem::path logs = folder / "LarkspurWindowsCameraHub" / "logs";
    ASSERT_EQ(mkfifo((logs / "DEFAULT.log").c_str(), 0600), 0);
    ASSERT_NE(redirectTo(folder), nullptr);
    LOG4CXX_INFO(log4cxx::Logger::getLogger("LarkspurWindowsCameraHub"), "to the others");
    EXPECT_NE(readFile(logs / "PRODUCT.log").find("to the others"), std::string::npos);
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

// The log files of such a redirection would be at the root of the file system: the child gets one of its own.
void redirectWithoutTheWordBelow(const std::filesystem::path& newRoot) {
    ASSERT_EQ(chroot(newRoot.c_str()), 0);
    ASSERT_EQ(chdir("/"), 0);
    setenv("CAMERA_HUB_COMMON_DATA", "/data", 1);
    const auto ordinary = createDiagnostics(testAppName, testVersion, 10, nullptr);
    ASSERT_NE(ordinary, nullptr);
    const std::filesystem::path properties =
        "/data/Halden Imaging Group/Larkspur Windows Camera Hub 2.9/logging.properties";
    const std::string generated = readFile(properties);
    writeFile(properties, "# edited\n");
    EXPECT_EQ(redirectTo("/client"), nullptr);
    EXPECT_EQ(readFile(properties), generated);
    EXPECT_STREQ(std::getenv("LARKSPURWINDOWSCAMERAHUB_LOG_DIR"), "");
    for (const auto& entry : std::filesystem::directory_iterator("/"))
        EXPECT_TRUE(entry.is_directory()) << entry.path();
    LOG4CXX_INFO(log4cxx::Logger::getRootLogger(), "still here");
    EXPECT_NE(readFile(Halden::toUtf8(ordinary->getLogFolder()) + "/DEFAULT.log").find("still here"),
              std::string::npos);
}

TEST_F(RedirectedDiagnosticsTest, WithoutTheWordInThePathTheConfigurationIsMadeAnewAndTheLogsStay) {
    std::filesystem::create_directories(root() / "newroot" / "data");
    std::filesystem::create_directories(root() / "newroot" / "client");
    runInPrivateMounts([this] { redirectWithoutTheWordBelow(root() / "newroot"); });
}

} // namespace
