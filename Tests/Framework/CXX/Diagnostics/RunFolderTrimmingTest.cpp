#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/HaldenDiagnostics.h"
#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FailingSystemCall.h"

#include <sys/syscall.h>

#include <cerrno>
#include <string>

namespace {

class RunFolderTrimmingTest : public DiagnosticsFixture {
protected:
    // Names that tell the opposite of the order of their making.
    static std::string nameOfRun(int number) { return "20" + std::to_string(60 - number) + "-01-01_00-00-00"; }

    void makeRuns(int count) const {
        for (int number = 0; number < count; ++number)
            makeRunFolder(nameOfRun(number));
    }

    bool has(const std::string& name) const { return std::filesystem::exists(allRuns() / name); }
};

TEST_F(RunFolderTrimmingTest, TenFoldersStayAndTheOldestByCreationGoes) {
    makeRuns(10);
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(runNames().size(), 10U);
    EXPECT_FALSE(has(nameOfRun(0)));
    EXPECT_TRUE(has(nameOfRun(1)));
    EXPECT_TRUE(has(Halden::toUtf8(diagnostics->getRunName())));
}

TEST_F(RunFolderTrimmingTest, TheYoungestByCreationStaysWhateverItsName) {
    makeRuns(3);
    makeRunFolder("1999-01-01_00-00-00");
    const auto diagnostics = makeDiagnostics(2);
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(runNames(), (std::set<std::string>{"1999-01-01_00-00-00", Halden::toUtf8(diagnostics->getRunName())}));
}

TEST_F(RunFolderTrimmingTest, ZeroKeepsOne) {
    makeRuns(3);
    const auto diagnostics = makeDiagnostics(0);
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(runNames(), std::set<std::string>{Halden::toUtf8(diagnostics->getRunName())});
}

TEST_F(RunFolderTrimmingTest, ANegativeNumberKeepsOne) {
    makeRuns(3);
    const auto diagnostics = makeDiagnostics(-5);
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(runNames(), std::set<std::string>{Halden::toUtf8(diagnostics->getRunName())});
}

TEST_F(RunFolderTrimmingTest, FewerFoldersStayAsTheyAre) {
    makeRuns(9);
    ASSERT_NE(makeDiagnostics(), nullptr);
    EXPECT_EQ(runNames().size(), 10U);
}

TEST_F(RunFolderTrimmingTest, OnlyRunFoldersCountAndGo) {
    for (const char* const name :
         {"2026-11-13", "2026-11-13_22-33-190", "old-logs-folder", "notes", "2026-11-13-22-33-19"}) {
        makeRunFolder(name);
    }
    makeRunFolder("2026-1-3_2-3-1");
    const auto diagnostics = makeDiagnostics(1);
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(runNames(), (std::set<std::string>{"2026-11-13", "2026-11-13-22-33-19", "2026-11-13_22-33-190", "notes",
                                                 "old-logs-folder", Halden::toUtf8(diagnostics->getRunName())}));
}

TEST_F(RunFolderTrimmingTest, AFolderGoesWithAllThatIsInIt) {
    makeRunFolder("2020-01-01_00-00-00");
    const std::filesystem::path old = allRuns() / "2020-01-01_00-00-00";
    std::filesystem::create_directories(old / "Traces" / "a" / "Data");
    writeFile(old / "Traces" / "a" / "Data" / "file", "text");
    writeFile(root() / "precious", "text");
    std::filesystem::create_symlink(root() / "precious", old / "link");
    ASSERT_NE(makeDiagnostics(1), nullptr);
    EXPECT_FALSE(std::filesystem::exists(old));
    EXPECT_TRUE(std::filesystem::exists(root() / "precious"));
}

TEST_F(RunFolderTrimmingTest, AFolderOfRunsThatCantBeReadIsTold) {
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    // A valid object whose folder of runs is no folder: only its name is asked for.
    class EverythingExists final : public IFileSystem {
        bool create_directory(const std::u16string& /* path */) const override { return false; }
        bool exists(const std::u16string& /* path */) const override { return true; }
    };
    const EverythingExists fileSystem;
    std::filesystem::remove_all(allRuns());
    HaldenDiagnostics other(Halden::toUtf16(testAppName), Halden::toUtf16(testVersion), u"", &fileSystem);
    writeFile(propertiesFile(), "");
    other.initializeLogging();
    testing::internal::CaptureStdout();
    other.trimRunFolders(10);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "FindFirstFile failed (2)\n");
}

TEST_F(RunFolderTrimmingTest, AWalkThatEndsEarlyIsTold) {
    const std::filesystem::path output = root() / "output";
    const int result = runInChild([&output] {
        const auto diagnostics = makeDiagnostics();
        ASSERT_NE(diagnostics, nullptr);
        sendStandardOutputTo(output);
        ASSERT_TRUE(letSystemCallFail(SYS_getdents64, EIO));
        diagnostics->trimRunFolders(10);
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(readFile(output), "FindNextFile error. Error is 5.\n");
}

} // namespace
