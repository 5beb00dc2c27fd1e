#include "Tests/Fuzz/FuzzTarget.h"

#include <ctime>

namespace {

// In seconds of the thread's own processor time, which a busy machine hardly lengthens. Without a sanitizer the slowest
// inputs take a thirtieth of it, and what grows faster than the input exceeds it at the size of FuzzMain's longest.
constexpr double limitOfAny = 0.3;
constexpr double limitPerByte = 4e-6;

SlowestInput slowest;

double processorTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

SlowestInput slowestInput() { return slowest; }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const double begin = processorTime();
    fuzz(data, size);
    const double taken = processorTime() - begin;
    const double limit = limitOfAny + limitPerByte * static_cast<double>(size);
    if (taken > slowest.share * limit)
        slowest = {taken / limit, size};
    if (taken > limit)
        std::fprintf(stderr, "%zu bytes took %.3f s, of %.3f s\n", size, taken, limit);
    require(taken <= limit, "an input takes a time in proportion to its size");
    return 0;
}
