#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/DiagnosticsFactories.h"
#include "Framework/CXX/Diagnostics/LoggingConfiguration.h"
#include "Framework/CXX/Diagnostics/RunFolderEntry.h"
#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"
#include "Tests/Support/ChildProcess.h"

#include <log4cxx/logger.h>
#include <sys/mount.h>

#include <ctime>
#include <fstream>
#include <thread>

namespace {

constexpr std::size_t diskSize = 1 << 20; // bytes

void logSomeLines(const std::string& text) {
    for (int line = 0; line < 20; ++line)
        LOG4CXX_INFO(log4cxx::Logger::getRootLogger(), text);
}

/// Each test works in a child whose data folder is a small disk of its own.
class FailingDiskTest : public DiagnosticsFixture {
protected:
    template <typename Work> void runOnSmallDisk(const Work& work) {
        runInPrivateMounts([&] {
            ASSERT_TRUE(mountMemory(common(), diskSize));
            work();
        });
    }

    std::filesystem::path ballast() const { return common() / "ballast"; }

    void fill() const {
        std::ofstream file(ballast(), std::ios::binary);
        const std::string block(4096, 'x');
        while (file.write(block.data(), static_cast<std::streamsize>(block.size())).flush()) {
        }
    }
};

TEST_F(FailingDiskTest, WhileItIsFullLinesAreLostAndTheHubGoesOn) {
    runOnSmallDisk([this] {
        const auto diagnostics = makeDiagnostics();
        ASSERT_NE(diagnostics, nullptr);
        const std::string log = Halden::toUtf8(diagnostics->getLogFolder()) + "/DEFAULT.log";
        logSomeLines("before");
        fill();
        logSomeLines(std::string(1000, 'm')); // more than the rest of a block
        std::filesystem::remove(ballast());
        logSomeLines("after");
        const std::string text = readFile(log);
        EXPECT_NE(text.find(" - before\n"), std::string::npos);
        EXPECT_NE(text.find(" - after\n"), std::string::npos);
        EXPECT_LT(text.size(), 20U * 1000U);
    });
}

TEST_F(FailingDiskTest, AFirstStartOnAFullOneLeavesAnEmptyConfigurationAndNoLog) {
    runOnSmallDisk([this] {
        fill(); // there is still room for names
        EXPECT_NE(makeDiagnostics(), nullptr);
        logSomeLines("nowhere");
        EXPECT_EQ(readFile(propertiesFile()), "");
    });
}

TEST_F(FailingDiskTest, AStartFailsWhereNoFolderCanBeMade) {
    runOnSmallDisk([this] {
        // Room for the root, the common folders, the configuration, the folder of all runs, and one more.
        ASSERT_EQ(mount(nullptr, common().c_str(), nullptr, MS_REMOUNT, "nr_inodes=6"), 0);
        EXPECT_EQ(makeDiagnostics(), nullptr);
        logSomeLines("nowhere");
    });
}

TEST_F(FailingDiskTest, AReadOnlyOneMakesAStartFail) {
    runOnSmallDisk([this] {
        ASSERT_NE(makeDiagnostics(), nullptr);
        Halden::configureBasicLogging(); // closes the log files
        ASSERT_EQ(mount(nullptr, common().c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
        EXPECT_EQ(createDiagnostics("Larkspur Windows Camera Hub", "3.0", 10, nullptr), nullptr);
        // A start within the same second finds the folders of the run before.
        const std::u16string name = Halden::toUtf16(*runNames().begin());
        while (RunFolderEntry::ofStartTime(std::time(nullptr)).name == name)
            std::this_thread::yield();
        EXPECT_EQ(makeDiagnostics(), nullptr);
        logSomeLines("nowhere");
    });
}

TEST_F(FailingDiskTest, ADataFolderThatGoesTakesTheLinesWithIt) {
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    std::filesystem::remove_all(appFolder());
    logSomeLines("into files that have no name any more");
    EXPECT_FALSE(std::filesystem::exists(appFolder()));
    const auto next = makeDiagnostics();
    ASSERT_NE(next, nullptr);
    logSomeLines("here again");
    EXPECT_NE(readFile(Halden::toUtf8(next->getLogFolder()) + "/DEFAULT.log").find("here again"), std::string::npos);
}

} // namespace
