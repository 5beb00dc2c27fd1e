#include "Tests/Support/ChildProcess.h"

#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <string>

namespace {

void flushOutput() {
    std::cout.flush();
    std::fflush(nullptr);
}

// The files of the user seem to be the superuser's there.
bool becomeSuperuserOfOwnNamespace(uid_t user, gid_t group) {
    if (unshare(CLONE_NEWNS | CLONE_NEWUSER) != 0)
        return false;
    writeFile("/proc/self/setgroups", "deny");
    writeFile("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    writeFile("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
    return true;
}

[[noreturn]] void runAndExit(const std::function<void()>& work) {
    try {
        work();
    } catch (const std::exception& error) {
        ADD_FAILURE() << "thrown: " << error.what();
    } catch (...) {
        ADD_FAILURE() << "something was thrown";
    }
    flushOutput();
    // Without the ends of a process: they belong to the parent.
    _exit(testing::Test::HasFailure() ? 1 : 0);
}

bool enterPrivateMounts() {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (user == 0 ? unshare(CLONE_NEWNS) != 0 : !becomeSuperuserOfOwnNamespace(user, group))
        return false;
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

} // namespace

int runInChild(const std::function<void()>& work) {
    flushOutput();
    const pid_t child = fork();
    if (child == 0)
        runAndExit(work);
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) == child) {
        if (WIFEXITED(status))
            return WEXITSTATUS(status);
        if (WIFSIGNALED(status))
            return -WTERMSIG(status);
        ptrace(PTRACE_CONT, child, nullptr, WSTOPSIG(status)); // a traced child stops at each signal
    }
    return 1;
}

bool letParentTrace() { return ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0; }

void runInPrivateMounts(const std::function<void()>& work) {
    constexpr int notAllowed = 77;
    const int result = runInChild([&work] {
        if (!enterPrivateMounts())
            _exit(notAllowed);
        work();
    });
    if (result == notAllowed)
        GTEST_SKIP() << "the system allows no private mounts here";
    EXPECT_EQ(result, 0);
}

bool mountMemory(const std::filesystem::path& folder, std::size_t bytes) {
    const std::string options = "size=" + std::to_string(bytes);
    return mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
}

void sendStandardOutputTo(const std::filesystem::path& file) {
    flushOutput();
    const int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    ASSERT_GE(descriptor, 0);
    ASSERT_EQ(dup2(descriptor, STDOUT_FILENO), STDOUT_FILENO);
    close(descriptor);
}
