// Part of a hub that counts its coverage, and of no other. The end-to-end tests end a hub by a signal, which would lose
// its counts: here SIGTERM writes them first.
#include <unistd.h>

#include <csignal>

extern "C" void __gcov_dump(); // NOLINT(bugprone-reserved-identifier): gcc's

namespace {

void flushAndEnd(int) {
    __gcov_dump();
    _exit(0);
}

[[maybe_unused]] const auto previous = std::signal(SIGTERM, flushAndEnd);

} // namespace
