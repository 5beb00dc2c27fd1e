// Install and uninstall, in the test's own process.

#include "Framework/CXX/System/CrashReporter/CrashReporter.h"

#include "Tests/Framework/CXX/System/CrashReporter/CrashRun.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <exception>
#include <thread>

namespace CrashTest {

using Halden::System::addScreenshotToCrashReports;
using Halden::System::CrashReporterInstallRecord;
using Halden::System::installCrashReporter;
using Halden::System::uninstallCrashReporter;

namespace {

constexpr std::array<int, 5> signals = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};

// The C library adds this flag, which has no name in its headers, to whatever it is told to set.
constexpr int restorer = 0x04000000;

/// All that an install changes in the process.
struct Surroundings {
    std::array<struct sigaction, signals.size()> actions = {};
    std::terminate_handler terminate = std::get_terminate();
    stack_t stack = {};
    std::ptrdiff_t descriptors = 0;

    Surroundings() {
        for (std::size_t i = 0; i < signals.size(); ++i)
            sigaction(signals[i], nullptr, &actions[i]);
        sigaltstack(nullptr, &stack);
        descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    }

    void expectSame(const Surroundings& other) const {
        for (std::size_t i = 0; i < signals.size(); ++i) {
            EXPECT_EQ(actions[i].sa_sigaction, other.actions[i].sa_sigaction) << signals[i];
            EXPECT_EQ(actions[i].sa_flags & ~restorer, other.actions[i].sa_flags & ~restorer) << signals[i];
            for (int blocked = 1; blocked < NSIG && !underThreadSanitizer; ++blocked) // it changes masks itself
                EXPECT_EQ(sigismember(&actions[i].sa_mask, blocked), sigismember(&other.actions[i].sa_mask, blocked));
        }
        EXPECT_EQ(terminate, other.terminate);
        EXPECT_EQ(stack.ss_sp, other.stack.ss_sp);
        EXPECT_EQ(stack.ss_size, other.stack.ss_size);
        EXPECT_EQ(stack.ss_flags, other.stack.ss_flags);
        EXPECT_EQ(descriptors, other.descriptors);
    }
};

void someHandler(int) {}

} // namespace

class CrashReporterTest : public testing::Test {
protected:
    CrashReporterTest() {
        record.applicationName = "name";
        record.applicationVersion = "1";
        record.reportFolder = folder.path();
    }
    ~CrashReporterTest() override { uninstallCrashReporter(); }

    ScratchFolder folder;
    CrashReporterInstallRecord record;
};

TEST_F(CrashReporterTest, UninstallPutsBackAllThatStoodBefore) {
    struct sigaction earlier{};
    struct sigaction original{};
    earlier.sa_handler = someHandler;
    earlier.sa_flags = SA_RESTART;
    sigaddset(&earlier.sa_mask, SIGUSR1);
    sigaction(SIGBUS, &earlier, &original);
    const Surroundings before;
    for (int i = 0; i < 200; ++i) {
        ASSERT_TRUE(installCrashReporter(record));
        EXPECT_NE(Surroundings().terminate, before.terminate);
        uninstallCrashReporter();
    }
    before.expectSame(Surroundings());
    sigaction(SIGBUS, &original, nullptr);
}

TEST_F(CrashReporterTest, InstallTakesAllSignalsAndTheTerminateHandler) {
    const Surroundings before;
    ASSERT_TRUE(installCrashReporter(record));
    const Surroundings during;
    for (std::size_t i = 0; i < signals.size(); ++i) {
        EXPECT_NE(during.actions[i].sa_sigaction, before.actions[i].sa_sigaction) << signals[i];
        EXPECT_NE(during.actions[i].sa_flags & SA_ONSTACK, 0);
    }
    EXPECT_NE(during.terminate, before.terminate);
    EXPECT_EQ(during.stack.ss_flags & SS_DISABLE, 0);
}

TEST_F(CrashReporterTest, SecondInstallFailsAndChangesNothing) {
    ASSERT_TRUE(installCrashReporter(record));
    const Surroundings first;
    EXPECT_FALSE(installCrashReporter(record));
    first.expectSame(Surroundings());
    uninstallCrashReporter();
    EXPECT_TRUE(installCrashReporter(record));
}

TEST_F(CrashReporterTest, MissingFolderFailsAndChangesNothing) {
    const Surroundings before;
    record.reportFolder = folder.path() / "missing";
    EXPECT_FALSE(installCrashReporter(record));
    before.expectSame(Surroundings());
}

TEST_F(CrashReporterTest, TooLongTextFailsAndChangesNothing) {
    const Surroundings before;
    record.applicationName = std::string(201, 'x');
    EXPECT_FALSE(installCrashReporter(record));
    before.expectSame(Surroundings());
}

TEST_F(CrashReporterTest, MissingHelperIsNoFailure) {
    record.helper = "/nonexistent";
    EXPECT_TRUE(installCrashReporter(record));
}

TEST_F(CrashReporterTest, UninstallKeepsWhatSomebodySetLater) {
    const Surroundings before;
    ASSERT_TRUE(installCrashReporter(record));
    std::signal(SIGFPE, someHandler);
    uninstallCrashReporter();
    struct sigaction now{};
    sigaction(SIGFPE, &before.actions[2], &now);
    EXPECT_EQ(now.sa_handler, someHandler);
    before.expectSame(Surroundings());
}

TEST_F(CrashReporterTest, UninstallWithoutInstallDoesNothing) {
    const Surroundings before;
    uninstallCrashReporter();
    before.expectSame(Surroundings());
}

TEST_F(CrashReporterTest, ScreenshotNeedsAnInstall) {
    EXPECT_FALSE(addScreenshotToCrashReports());
    ASSERT_TRUE(installCrashReporter(record));
    EXPECT_TRUE(addScreenshotToCrashReports());
}

TEST_F(CrashReporterTest, EveryThreadHasAnAlternateStack) {
    stack_t stack{};
    stack.ss_flags = SS_DISABLE;
    std::thread([&stack] { sigaltstack(nullptr, &stack); }).join();
    EXPECT_EQ(stack.ss_flags & SS_DISABLE, 0);
}

} // namespace CrashTest
