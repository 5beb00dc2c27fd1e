// Stands in for the crash helper: stops all threads of the crashing process, says so, and hangs.

#include "Framework/CXX/System/CrashReporter/Helper/StoppedThreads.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char* argv[]) {
    if (argc < 3)
        return 2;
    const Halden::System::StoppedThreads held(std::atoi(argv[1]), std::atoi(argv[2]));
    std::size_t count = 0;
    for (const auto& [thread, state] : held.threads())
        count += state.registers ? 1 : 0;
    std::printf("\nHolding %zu threads.\n", count);
    std::fflush(stdout);
    for (;;)
        pause();
}
