#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"
#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"

#include <atomic>
#include <thread>

namespace {

class DiagnosticsRedirectionTest : public DiagnosticsFixture {
protected:
    ~DiagnosticsRedirectionTest() override { shutdownDiagnosticsAndLogging(); }

    static bool initialize() { return initializeDiagnosticsAndLogging(applicationName(), applicationVersion()); }

    static bool redirectTo(const std::filesystem::path& folder) {
        return initializeRedirectedDiagnosticsAndLogging(applicationName(), applicationVersion(), folder);
    }

    std::set<std::string> logFilesOf(const std::filesystem::path& run) const {
        std::set<std::string> files;
        for (const char* const file : {"DEFAULT.log", "DEVICE.log", "PRODUCT.log", "TIMING.log"})
            files.insert(run / "logs" / file);
        return files;
    }
};

TEST_F(DiagnosticsRedirectionTest, MovesLogsAndCrashRecordsAndBack) {
    ASSERT_TRUE(initialize());
    const std::filesystem::path folder = makeRedirectFolder("mine");
    ASSERT_TRUE(redirectTo(folder));
    const std::filesystem::path run = folder / "LarkspurWindowsCameraHub";
    EXPECT_EQ(getDiagnosticsFolderUtf8(), run);
    EXPECT_TRUE(std::filesystem::is_directory(run / "Crash"));
    EXPECT_EQ(openFiles(), logFilesOf(run));
    LOG4CXX_INFO(serviceLogger(), "over there");
    EXPECT_NE(readFile(run / "logs" / "PRODUCT.log").find("over there"), std::string::npos);

    ASSERT_TRUE(initialize());
    LOG4CXX_INFO(serviceLogger(), "back");
    const std::filesystem::path ordinary = getDiagnosticsFolderUtf8();
    EXPECT_EQ(ordinary.parent_path(), allRuns());
    EXPECT_EQ(openFiles(), logFilesOf(ordinary));
    EXPECT_NE(readFile(ordinary / "logs" / "PRODUCT.log").find("back"), std::string::npos);
    EXPECT_EQ(readFile(run / "logs" / "PRODUCT.log").find("back"), std::string::npos);
}

TEST_F(DiagnosticsRedirectionTest, AFailureLeavesNoObjectUntilTheCallerMakesOne) {
    ASSERT_TRUE(initialize());
    EXPECT_FALSE(redirectTo(root() / "client" / "Diagnostics" / "missing"));
    EXPECT_EQ(getDiagnosticsFolderUtf8(), "");
    ASSERT_TRUE(initialize());
    EXPECT_NE(getDiagnosticsFolderUtf8(), "");
}

TEST_F(DiagnosticsRedirectionTest, PrunesOnTheWayBack) {
    for (int number = 10; number < 22; ++number)
        makeRunFolder("2020-01-01_00-00-" + std::to_string(number));
    ASSERT_TRUE(redirectTo(makeRedirectFolder("mine")));
    EXPECT_EQ(runNames().size(), 12U);
    ASSERT_TRUE(initialize());
    EXPECT_EQ(runNames().size(), 10U);
}

TEST_F(DiagnosticsRedirectionTest, TwoHundredInARowLeaveNoFileOfAnEarlierRunOpenWhileOtherThreadsLog) {
    testing::internal::CaptureStdout();
    ASSERT_TRUE(initialize());
    const std::filesystem::path folder = makeRedirectFolder("mine");
    std::atomic<bool> done = false;
    std::thread other([&] {
        while (!done) {
            LOG4CXX_INFO(deviceLogger(), "of another thread");
            std::this_thread::yield();
        }
    });
    for (int time = 0; time < 200; ++time) {
        const bool redirected = redirectTo(folder);
        EXPECT_TRUE(redirected);
        const std::filesystem::path there = getDiagnosticsFolderUtf8();
        EXPECT_EQ(openFiles(), logFilesOf(there)) << "time " << time;
        const bool back = initialize();
        EXPECT_TRUE(back);
        EXPECT_EQ(openFiles(), logFilesOf(getDiagnosticsFolderUtf8())) << "time " << time;
    }
    done = true;
    other.join();
    testing::internal::GetCapturedStdout();
    EXPECT_LE(runNames().size(), 10U);
}

} // namespace
