// The program that a crashing process starts to have itself described. Arguments: process id, id of the
// crashing thread, address of its saved registers, number of the signal, time limit in milliseconds, all
// in decimal; optionally the path of a core file to write. The report goes to standard output. It ends
// with 0 if the report is complete; otherwise the crashing process writes a shorter one.

#include "Framework/CXX/System/CrashReporter/Helper/CoreFile.h"
#include "Framework/CXX/System/CrashReporter/Helper/CrashedProcess.h"
#include "Framework/CXX/System/CrashReporter/Helper/Report.h"

#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace {

constexpr int argumentsAtLeast = 6;

std::uint64_t number(const char* text) { return std::strtoull(text, nullptr, 10); }

/// The crashing process had all signals blocked when it started us, and may have ignored some; should it
/// be gone, nobody else watches over the time limit.
void endInTime(std::uint64_t limitInMs) {
    std::signal(SIGALRM, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    alarm(static_cast<unsigned>(limitInMs / 1000 + 1));
}

} // namespace

int main(int argc, char* argv[]) {
    using namespace Halden::System;
    if (argc < argumentsAtLeast) {
        std::fprintf(stderr, "This program is started by a crashing process.\n");
        return 2;
    }
    endInTime(number(argv[5]));
    try {
        CrashedProcess process(static_cast<pid_t>(number(argv[1])), static_cast<pid_t>(number(argv[2])),
                               number(argv[3]));
        writeReport(process, stdout);
        if (argc > argumentsAtLeast) {
            const std::string problem =
                writeCoreFile(process, static_cast<int>(number(argv[4])), argv[argumentsAtLeast]);
            std::fprintf(stdout, "\nCore file: %s\n", problem.empty() ? argv[argumentsAtLeast] : problem.c_str());
        }
    } catch (const std::exception& error) {
        std::fprintf(stdout, "\n%s\n", error.what());
        std::fflush(stdout);
        return 1;
    }
    return 0;
}
