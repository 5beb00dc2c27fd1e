#include "Framework/CXX/Diagnostics/DiagnosticsFactories.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"
#include "Tests/Framework/CXX/Diagnostics/FailingAllocations.h"
#include "Tests/Support/ChildProcess.h"

#include <log4cxx/logger.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <functional>

namespace {

/// The machine's file system with one folder that can't be made.
class FileSystemWithFault final : public IFileSystem {
public:
    explicit FileSystemWithFault(std::u16string word) : _word(std::move(word)) {}

    bool create_directory(const std::u16string& path) const override {
        if (path.find(_word) != std::u16string::npos) {
            throw std::filesystem::filesystem_error("create_directory", Halden::toUtf8(path),
                                                    std::error_code(ENOSPC, std::generic_category()));
        }
        return mkdir(Halden::toUtf8(path).c_str(), 0700) == 0;
    }

    bool exists(const std::u16string& path) const override {
        return std::filesystem::exists(std::filesystem::path(Halden::toUtf8(path)));
    }

private:
    const std::u16string _word;
};

class DiagnosticsFactoriesTest : public DiagnosticsFixture {
protected:
    /// Leaves one run folder, with a trace in it, that is older than any made from now on.
    void leaveOneOldRun() {
        if (_oldRuns == 0) {
            for (; _oldRuns < 200; ++_oldRuns)
                std::filesystem::create_directories(oldRun(_oldRuns + 1) / "Traces" /
                                                    "_default_2020-01-01_00-00-00-0000");
            makeRunFolder("2020-01-01_00-00-00"); // waits until whatever is made is younger
        }
        std::filesystem::remove_all(allRuns());
        std::filesystem::create_directories(allRuns());
        std::filesystem::rename(oldRun(_oldRuns--), allRuns() / "2020-01-01_00-00-00"); // keeps its time
    }

private:
    std::filesystem::path oldRun(int number) const { return root() / "old" / std::to_string(number); }

    int _oldRuns = 0; // how many are in stock
};

// In a child, which a throw would end.
void expectNoThrowWhereverMemoryRunsOut(const std::function<void()>& prepare,
                                        const std::function<std::unique_ptr<HaldenDiagnostics>()>& create) {
    const int result = runInChild([&] {
        bool ranOut = true;
        for (int allocations = 0; ranOut; ++allocations) {
            prepare();
            std::unique_ptr<HaldenDiagnostics> diagnostics;
            {
                const FailingAllocations failures(allocations);
                diagnostics = create();
                ranOut = failures.haveHappened();
            }
            EXPECT_TRUE(diagnostics == nullptr || diagnostics->isValid()) << allocations;
            EXPECT_TRUE(diagnostics != nullptr || ranOut);
        }
    });
    EXPECT_EQ(result, 0);
}

TEST_F(DiagnosticsFactoriesTest, AStartLeavesTheWholeTree) {
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_TRUE(std::filesystem::is_regular_file(propertiesFile()));
    ASSERT_EQ(runNames().size(), 1U);
    const std::filesystem::path run = allRuns() / *runNames().begin();
    EXPECT_EQ(Halden::toUtf8(diagnostics->getRunFolder()), run.string());
    for (const char* const log : {"DEFAULT.log", "DEVICE.log", "PRODUCT.log", "TIMING.log"})
        EXPECT_TRUE(std::filesystem::is_regular_file(run / "logs" / log)) << log;
    const std::string trace = diagnostics->getDefaultTraceId();
    EXPECT_TRUE(trace.starts_with("_default_")) << trace;
    EXPECT_TRUE(std::filesystem::is_directory(run / "Traces" / trace / "Data"));
    EXPECT_EQ(diagnostics->getCurrentTraceId(), trace);
    EXPECT_FALSE(std::filesystem::exists(run / "Crash"));
}

TEST_F(DiagnosticsFactoriesTest, TheRunIsNamedByItsStartTime) {
    const std::time_t before = std::time(nullptr);
    const auto diagnostics = makeDiagnostics();
    const std::time_t after = std::time(nullptr);
    ASSERT_NE(diagnostics, nullptr);
    std::tm time{};
    ASSERT_NE(strptime(Halden::toUtf8(diagnostics->getRunName()).c_str(), "%Y-%m-%d_%H-%M-%S", &time), nullptr);
    time.tm_isdst = -1;
    const std::time_t started = std::mktime(&time);
    EXPECT_GE(started, before);
    EXPECT_LE(started, after);
}

TEST_F(DiagnosticsFactoriesTest, TheFoldersAreTold) {
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    const std::string run = allRuns() / *runNames().begin();
    EXPECT_EQ(Halden::toUtf8(diagnostics->getBaseFolder()), appFolder());
    EXPECT_EQ(Halden::toUtf8(diagnostics->getDiagnosticsFolder()), allRuns());
    EXPECT_EQ(Halden::toUtf8(diagnostics->getRunName()), *runNames().begin());
    EXPECT_EQ(Halden::toUtf8(diagnostics->getLogFolder()), run + "/logs");
    EXPECT_EQ(Halden::toUtf8(diagnostics->getTracesFolder()), run + "/Traces");
}

TEST_F(DiagnosticsFactoriesTest, TheVariableNamesTheLogFolder) {
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    const char* const variable = std::getenv("LARKSPURWINDOWSCAMERAHUB_LOG_DIR");
    ASSERT_NE(variable, nullptr);
    EXPECT_EQ(variable, Halden::toUtf8(diagnostics->getLogFolder()));
}

TEST_F(DiagnosticsFactoriesTest, AMissingDataFolderIsAFailureAndNoParentsAreMade) {
    const ScopedEnvironment variable("CAMERA_HUB_COMMON_DATA", root() / "missing" / "data");
    EXPECT_EQ(makeDiagnostics(), nullptr);
    EXPECT_FALSE(std::filesystem::exists(root() / "missing"));
}

TEST_F(DiagnosticsFactoriesTest, AFileInPlaceOfAFolderIsAFailure) {
    writeFile(common() / "Halden Imaging Group", "");
    EXPECT_EQ(makeDiagnostics(), nullptr);
}

TEST_F(DiagnosticsFactoriesTest, TwoStartsWithinASecondShareARunFolderAndStartItsLogsAnew) {
    for (int attempt = 0; attempt < 10; ++attempt) { // the second may change between the two
        const auto first = makeDiagnostics();
        ASSERT_NE(first, nullptr);
        LOG4CXX_INFO(log4cxx::Logger::getRootLogger(), "of the first run");
        const auto second = makeDiagnostics();
        ASSERT_NE(second, nullptr);
        if (first->getRunName() == second->getRunName()) {
            EXPECT_EQ(readFile(Halden::toUtf8(second->getLogFolder()) + "/DEFAULT.log"), "");
            return;
        }
    }
    FAIL() << "no two starts fell within one second";
}

TEST_F(DiagnosticsFactoriesTest, AFailureOfTheDefaultTraceStillGivesAWorkingObject) {
    const FileSystemWithFault fileSystem(u"_default_");
    const auto diagnostics = createDiagnostics(testAppName, testVersion, 1, &fileSystem);
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_TRUE(diagnostics->isValid());
    EXPECT_EQ(diagnostics->getDefaultTraceId(), "");
    EXPECT_EQ(diagnostics->getCurrentTraceId(), "");
}

TEST_F(DiagnosticsFactoriesTest, WithoutTheDefaultTraceNothingIsPruned) {
    makeRunFolder("2020-01-01_00-00-00");
    const FileSystemWithFault fileSystem(u"_default_");
    ASSERT_NE(createDiagnostics(testAppName, testVersion, 1, &fileSystem), nullptr);
    EXPECT_EQ(runNames().size(), 2U);
}

TEST_F(DiagnosticsFactoriesTest, TheRunsFoldersAreMadeThroughTheDefaultFileSystem) {
    const FileSystemWithFault fileSystem(u"Diagnostics");
    EXPECT_NE(createDiagnostics(testAppName, testVersion, 10, &fileSystem), nullptr);
}

TEST_F(DiagnosticsFactoriesTest, AFailureOfTheGivenFileSystemInTheCommonFolderIsAFailure) {
    const FileSystemWithFault fileSystem(u"Halden Imaging Group");
    EXPECT_EQ(createDiagnostics(testAppName, testVersion, 10, &fileSystem), nullptr);
}

TEST_F(DiagnosticsFactoriesTest, DoNotThrowWhereverMemoryRunsOut) {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "trying each allocation takes minutes under the thread sanitizer";
#endif
    // An old run is to be removed each time. The generated configuration has hundreds of lines of one kind.
    std::filesystem::create_directories(appFolder());
    writeFile(propertiesFile(), R"(
log4j.rootLogger=INFO, A
log4j.appender.A=org.apache.log4j.FileAppender
log4j.appender.A.File=${LARKSPURWINDOWSCAMERAHUB_LOG_DIR}/A.log
log4j.appender.A.layout=org.apache.log4j.SimpleLayout
)");
    expectNoThrowWhereverMemoryRunsOut([this] { leaveOneOldRun(); },
                                       [] { return createDiagnostics(testAppName, testVersion, 1, nullptr); });
    const std::string folder = makeRedirectFolder("mine");
    expectNoThrowWhereverMemoryRunsOut(
        [] {}, [&] { return createRedirectedDiagnostics(testAppName, testVersion, folder, nullptr); });
}

TEST_F(DiagnosticsFactoriesTest, TextThatIsNotUtf8BecomesEmpty) {
    const auto diagnostics = createDiagnostics("App\xFF", "\xC3", 10, nullptr);
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(Halden::toUtf8(diagnostics->getBaseFolder()), common() / "Halden Imaging Group");
}

} // namespace
