// What stands in a record, and what happens when one can't be made as usual.

#include "Tests/Framework/CXX/System/CrashReporter/CrashRun.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iomanip>
#include <sstream>

namespace CrashTest {

using testing::ContainsRegex;

namespace {

constexpr const char* shortRecordNote =
    "; what follows was written by the crashing process itself, which can't tell names.";

void checkShortRecord(const CrashRun& run, const std::string& why) {
    EXPECT_TRUE(run.record.starts_with("What happened:  Segmentation fault (SIGSEGV): no memory at address 0x0\n"))
        << run.record;
    EXPECT_NE(run.record.find("\n" + why + shortRecordNote + "\n"), std::string::npos) << run.record;
    const std::string stack = section(run.record, "Where it happened");
    EXPECT_THAT(stack, ContainsRegex("    0x[0-9a-f]{16} /.*/CrashProgram\\+0x[0-9a-f]+\n"));
    EXPECT_NE(stack.find("/libc.so.6+0x"), std::string::npos) << stack;
    EXPECT_THAT(section(run.record, "Registers:"), ContainsRegex("    rip 0x[0-9a-f]{16}"));
    EXPECT_NE(section(run.record, "Memory map:").find("[stack]"), std::string::npos);
}

int countOf(const std::string& text, const std::string& part) {
    int count = 0;
    for (std::size_t place = text.find(part); place != std::string::npos; place = text.find(part, place + 1))
        ++count;
    return count;
}

bool killedBy(const CrashRun& run, int signal) { return WIFSIGNALED(run.status) && WTERMSIG(run.status) == signal; }

} // namespace

TEST(CrashRecordTest, NameHoldsLocalTimeAndProcess) {
    setenv("TZ", "XXX-5:45", 1);
    const ScratchFolder folder;
    const std::time_t before = std::time(nullptr);
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "main"});
    unsetenv("TZ");
    std::tm parts{};
    std::istringstream name(run.recordName);
    name >> std::get_time(&parts, "crash-%Y-%m-%d_%H-%M-%S-");
    int process = 0;
    std::string extension;
    name >> process >> extension;
    EXPECT_EQ(process, run.process);
    EXPECT_EQ(extension, ".txt");
    constexpr std::time_t offset = (5 * 60 + 45) * 60;
    const std::time_t time = timegm(&parts) - offset;
    EXPECT_GE(time, before);
    EXPECT_LE(time, std::time(nullptr));
    EXPECT_THAT(run.record, ContainsRegex("\nWhen:           [0-9-]{10} [0-9:]{8} \\+05:45 \\(local time\\)\n"));
}

TEST(CrashRecordTest, TellsWhoSentTheSignal) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"wait", "main"}, SIGABRT);
    EXPECT_TRUE(
        run.record.starts_with("What happened:  Abort (SIGABRT): sent by process " + std::to_string(getpid()) + "\n"))
        << run.record;
    EXPECT_TRUE(killedBy(run, SIGABRT));
}

TEST(CrashRecordTest, HoldsTheStacksOfAllThreads) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"manyThreads", "main"});
    EXPECT_EQ(countOf(run.record, "\"busy\":\n  #0 "), 4) << run.record;
    EXPECT_EQ(countOf(run.record, "\"sleepy\":\n  #0 "), 46) << run.record;
}

TEST(CrashRecordTest, HoldsTheLastWordsOfTheCLibrary) {
    if (underSanitizer)
        GTEST_SKIP() << "A sanitizer replaces the heap";
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"freeTwice", "main"});
    EXPECT_NE(run.record.find("\nThe C library said: double free or corruption"), std::string::npos) << run.record;
}

TEST(CrashRecordTest, ShowsBothEndsOfAnOverflowedStack) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"overflowTheStack", "main"});
    EXPECT_THAT(run.record, ContainsRegex("\n  \\.\\.\\. [0-9]{4,} frames \\.\\.\\.\n"));
    EXPECT_NE(run.record.find(" main at "), std::string::npos) << run.record;
}

TEST(CrashRecordTest, TellsOfAScreenshotThatWasAskedFor) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "main", "screenshot=yes"});
    EXPECT_NE(run.record.find("\nScreenshot:     none; this process has no windows\n"), std::string::npos);
}

TEST(CrashRecordTest, MissingHelperLeavesAShortRecord) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "main", "helper=/nonexistent"});
    checkShortRecord(run, "The crash helper could not be started");
}

TEST(CrashRecordTest, ProcessThatCannotStartAnotherLeavesAShortRecord) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"crashWithoutRoomForProcesses", "main"});
    checkShortRecord(run, "The crash helper could not be started");
}

TEST(CrashRecordTest, FailingHelperLeavesAShortRecord) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "thread", "helper=/bin/false"});
    checkShortRecord(run, "The crash helper failed");
}

TEST(CrashRecordTest, HangingHelperIsEndedAndLeavesAShortRecord) {
    const ScratchFolder folder;
    // sleep takes the helper's numeric arguments for times, and adds them up.
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "main", "helper=/bin/sleep", "helperTimeLimit=1000"});
    checkShortRecord(run, "The crash helper took too long and was ended");
    EXPECT_GE(run.duration.count(), 1000);
}

TEST(CrashRecordTest, HangingHelperThatHoldsAllThreadsIsEndedToo) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(
        folder, {"manyThreads", "main", "helper=" + programFolder() + "/HangingHelper", "helperTimeLimit=5000"});
    // A sanitizer may have a thread of its own.
    EXPECT_THAT(run.record, ContainsRegex("\nHolding 5[01] threads\\.\n"));
    checkShortRecord(run, "The crash helper took too long and was ended");
}

TEST(CrashRecordTest, ExceptionWhoseTextHangsIsRecordedInTime) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"throwWithHangingText", "thread", "helperTimeLimit=2000"});
    EXPECT_TRUE(run.record.starts_with("What happened:  Uncaught exception of type N9CrashTest11HangingTextE; while it "
                                       "was being described: Abort (SIGABRT): it took too long\n"))
        << run.record;
    EXPECT_TRUE(killedBy(run, SIGABRT)) << run.status;
    EXPECT_GE(run.duration.count(), 2000);
}

TEST(CrashRecordTest, ShortRecordComesOutWhileTheHeapIsLocked) {
    if (underSanitizer)
        GTEST_SKIP() << "A sanitizer replaces the heap";
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"crashInsideMalloc", "thread", "helper=/nonexistent"});
    EXPECT_NE(run.record.find(shortRecordNote), std::string::npos) << run.record;
    EXPECT_TRUE(killedBy(run, SIGSEGV));
}

TEST(CrashRecordTest, ProcessThatMustNotBeLookedIntoLeavesAShortRecord) {
    if (geteuid() != 0)
        GTEST_SKIP() << "Only root can become the ordinary user whom the kernel refuses";
    constexpr uid_t nobody = 65534;
    const ScratchFolder folder;
    ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "main", "user=" + std::to_string(nobody)});
    EXPECT_NE(run.record.find("can't be read: Operation not permitted"), std::string::npos) << run.record;
    EXPECT_NE(run.record.find("\nThe crash helper failed" + std::string(shortRecordNote)), std::string::npos);
}

TEST(CrashRecordTest, VanishedFolderChangesNothingElse) {
    const ScratchFolder folder;
    const ScratchFolder parent;
    const auto reports = parent.path() / "reports";
    std::filesystem::create_directory(reports);
    setenv("CRASH_TEST_FOLDER", reports.c_str(), 1);
    const CrashRun run = runCrashProgram(folder, {"crashWhenFolderIsGone", "main", "reportFolder=" + reports.string()});
    const CrashRun without = runCrashProgram(folder, {"writeToNull", "main", "install=no"});
    unsetenv("CRASH_TEST_FOLDER");
    EXPECT_FALSE(std::filesystem::exists(reports));
    EXPECT_EQ(run.status, without.status);
    EXPECT_TRUE(run.record.empty());
}

TEST(CrashRecordTest, EarlierHandlerSeesTheVeryFault) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "main", "earlierHandler=42"});
    EXPECT_TRUE(WIFEXITED(run.status) && WEXITSTATUS(run.status) == 42) << run.status;
    EXPECT_FALSE(run.record.empty());
}

TEST(CrashRecordTest, SecondCrashAtTheSameTimeWaits) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"crashTwice", "main"});
    EXPECT_THAT(run.record, ContainsRegex("^What happened:  (Segmentation|Uncaught exception)"));
    EXPECT_NE(section(run.record, "Modules").find("/CrashProgram"), std::string::npos) << run.record;
    EXPECT_TRUE(underSanitizer || killedBy(run, SIGSEGV) || killedBy(run, SIGABRT)) << run.status;
}

TEST(CrashRecordTest, ForkedChildLeavesNone) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"crashInForkedChild", "main"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.record.empty()) << run.record;
}

TEST(CrashRecordTest, OrdinaryEndLeavesNone) {
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"nothing", "thread"});
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.record.empty());
    EXPECT_TRUE(folder.files(".core").empty());
}

TEST(CrashRecordTest, SystemsOwnCoreDumpStillHappens) {
    if (underSanitizer)
        GTEST_SKIP() << "A sanitizer ends the process itself, and switches core files off";
    if (readFile("/proc/sys/kernel/core_pattern") != "core\n")
        GTEST_SKIP() << "The system's core files go elsewhere";
    rlimit before{};
    getrlimit(RLIMIT_CORE, &before);
    if (before.rlim_max == 0)
        GTEST_SKIP() << "Core files are forbidden here";
    const rlimit wanted{before.rlim_max, before.rlim_max};
    setrlimit(RLIMIT_CORE, &wanted);
    const ScratchFolder folder;
    const CrashRun run = runCrashProgram(folder, {"writeToNull", "main"});
    const CrashRun exceptionRun = runCrashProgram(ScratchFolder(), {"throwRuntimeError", "thread"});
    setrlimit(RLIMIT_CORE, &before);
    EXPECT_TRUE(WCOREDUMP(run.status));
    EXPECT_TRUE(WCOREDUMP(exceptionRun.status));
    const bool exists = std::filesystem::exists(folder.path() / "core") ||
                        std::filesystem::exists(folder.path() / ("core." + std::to_string(run.process)));
    EXPECT_TRUE(exists);
}

} // namespace CrashTest
