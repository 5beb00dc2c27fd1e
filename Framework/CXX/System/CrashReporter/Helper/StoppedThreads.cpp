#include "Framework/CXX/System/CrashReporter/Helper/StoppedThreads.h"

#include <elf.h>
#include <sys/ptrace.h>
#include <sys/uio.h>
#include <sys/wait.h>

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

namespace Halden::System {

namespace {

// All threads together. A thread that waits for a disk or a driver can't be stopped before it is done.
constexpr std::chrono::seconds stopTimeLimit{3};
constexpr std::chrono::milliseconds nap{1};

std::filesystem::path taskFolder(pid_t process) {
    return std::filesystem::path("/proc") / std::to_string(process) / "task";
}

std::string reasonOf(int error) { return std::error_code(error, std::generic_category()).message(); }

std::optional<user_regs_struct> readRegisters(pid_t thread) {
    user_regs_struct registers{};
    iovec place{&registers, sizeof(registers)};
    if (ptrace(PTRACE_GETREGSET, thread, NT_PRSTATUS, &place) != 0)
        return std::nullopt;
    return registers;
}

} // namespace

std::string threadName(pid_t process, pid_t thread) {
    std::ifstream file(taskFolder(process) / std::to_string(thread) / "comm");
    std::string name;
    std::getline(file, name);
    return name;
}

StoppedThreads::StoppedThreads(pid_t process, pid_t leftOut) : _process(process), _leftOut(leftOut) {
    const auto deadline = std::chrono::steady_clock::now() + stopTimeLimit;
    // A thread that runs may start another one behind our back, so look until nothing is new.
    while (seizeNewThreads() && std::chrono::steady_clock::now() < deadline) {
        for (auto& [thread, state] : _threads)
            if (!state.registers && state.problem.empty())
                waitUntilStopped(thread, deadline);
    }
}

StoppedThreads::~StoppedThreads() {
    for (const auto& [thread, state] : _threads)
        ptrace(PTRACE_DETACH, thread, nullptr, nullptr); // fails harmlessly for what was never held
}

bool StoppedThreads::seizeNewThreads() {
    bool found = false;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(taskFolder(_process), error)) {
        const std::string text = entry.path().filename().string();
        pid_t thread = 0;
        std::from_chars(text.data(), text.data() + text.size(), thread);
        if (thread == _leftOut || thread == 0 || _threads.contains(thread))
            continue;
        found = true;
        ThreadState& state = _threads[thread];
        state.name = threadName(_process, thread);
        if (ptrace(PTRACE_SEIZE, thread, nullptr, nullptr) != 0 ||
            ptrace(PTRACE_INTERRUPT, thread, nullptr, nullptr) != 0) {
            state.problem = reasonOf(errno);
        }
    }
    return found;
}

void StoppedThreads::waitUntilStopped(pid_t thread, std::chrono::steady_clock::time_point deadline) {
    ThreadState& state = _threads[thread];
    do {
        int status = 0;
        const pid_t changed = waitpid(thread, &status, __WALL | WNOHANG);
        if (changed == thread && WIFSTOPPED(status)) {
            state.registers = readRegisters(thread);
            state.problem = state.registers ? "" : reasonOf(errno);
            return;
        }
        if (changed != 0) {
            state.problem = "it has ended";
            return;
        }
        std::this_thread::sleep_for(nap);
    } while (std::chrono::steady_clock::now() < deadline);
    state.problem = "it did not stop in time";
}

} // namespace Halden::System
