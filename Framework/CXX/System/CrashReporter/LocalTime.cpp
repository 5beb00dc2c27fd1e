#include "Framework/CXX/System/CrashReporter/LocalTime.h"

#include <chrono>

namespace Halden::System {

namespace {

constexpr std::time_t day = 24L * 60 * 60;
constexpr std::time_t learntSpan = 5L * 366 * day;

long offsetAt(std::time_t moment) {
    std::tm parts{};
    return localtime_r(&moment, &parts) != nullptr ? parts.tm_gmtoff : 0;
}

/// The first second with the later offset, between a moment with the earlier one and one without.
std::time_t findChange(std::time_t before, std::time_t behind, long earlierOffset) {
    while (behind - before > 1) {
        const std::time_t middle = before + (behind - before) / 2;
        (offsetAt(middle) == earlierOffset ? before : behind) = middle;
    }
    return behind;
}

} // namespace

void UtcOffsets::learn(std::time_t from) {
    tzset();
    _changes[0] = {from, offsetAt(from)};
    _count = 1;
    for (std::time_t moment = from; moment < from + learntSpan && _count < mostChanges; moment += day) {
        const long known = _changes[_count - 1].offsetInSeconds;
        if (offsetAt(moment + day) != known) {
            const std::time_t since = findChange(moment, moment + day, known);
            _changes[_count++] = {since, offsetAt(since)};
        }
    }
}

LocalTime UtcOffsets::localTime(std::time_t moment) const noexcept {
    long offset = _changes[0].offsetInSeconds;
    for (std::size_t i = 1; i < _count && _changes[i].since <= moment; ++i)
        offset = _changes[i].offsetInSeconds;
    const std::chrono::sys_seconds shifted{std::chrono::seconds{moment + offset}};
    const auto midnight = std::chrono::floor<std::chrono::days>(shifted);
    const std::chrono::year_month_day date{midnight};
    const std::chrono::hh_mm_ss time{shifted - midnight};
    return {static_cast<int>(date.year()),
            static_cast<unsigned>(date.month()),
            static_cast<unsigned>(date.day()),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count()),
            offset};
}

} // namespace Halden::System
