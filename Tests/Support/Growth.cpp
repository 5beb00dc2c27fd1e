#include "Tests/Support/Growth.h"

#include <algorithm>
#include <ctime>

namespace {

constexpr std::size_t smallSize = 100'000; // bytes
constexpr std::size_t largeSize = 10 * smallSize;
constexpr int mostRounds = 10;

/// In ns, never 0.
double threadTime(const std::function<void()>& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
    };
    const double begin = now();
    work();
    return std::max(now() - begin, 1.0);
}

} // namespace

double growth(const WorkOfSize& prepare) {
    const auto workOnSmall = prepare(smallSize);
    const auto workOnLarge = prepare(largeSize);
    workOnSmall(); // what is done once only, and pages touched for the first time, would make the small one look slow
    // The shortest of a few: whatever disturbs the work makes it longer, and a busy machine takes its caches. The large
    // one, if slow, is done least often.
    double small = threadTime(workOnSmall);
    double large = threadTime(workOnLarge);
    for (int round = 0; round < mostRounds; ++round) {
        for (int again = 0; again < 4; ++again)
            small = std::min(small, threadTime(workOnSmall));
        if (large / small < linearGrowth)
            break;
        large = std::min(large, threadTime(workOnLarge));
    }
    return large / small;
}

std::string GrowingText::ofSize(std::size_t size) const {
    std::string text = begin;
    const std::size_t mark = piece.find('#');
    for (int count = 0; text.size() < size; ++count)
        if (mark == std::string::npos)
            text += piece;
        else
            text += piece.substr(0, mark) + std::to_string(count) + piece.substr(mark + 1);
    return text + end;
}
