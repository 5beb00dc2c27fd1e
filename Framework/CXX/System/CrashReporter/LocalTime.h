#pragma once

#include <cstddef>
#include <ctime>

namespace Halden::System {

/// A moment on the wall clock.
struct LocalTime {
    int year;
    unsigned month; ///< 1 to 12
    unsigned day;   ///< 1 to 31
    int hour;
    int minute;
    int second;
    long offsetInSeconds; ///< east of UTC
};

/// The offsets from UTC of the years ahead, learnt while asking for them is safe: a crashing process
/// can't call localtime_r, which takes a lock and may allocate.
class UtcOffsets {
public:
    /// Learns what holds at `from` and the changes of the five years behind it. Allocates and locks.
    void learn(std::time_t from);

    /// Async-signal-safe.
    LocalTime localTime(std::time_t moment) const noexcept;

private:
    struct Change {
        std::time_t since;
        long offsetInSeconds;
    };
    static constexpr std::size_t mostChanges = 16; // three a year in the busiest zones

    Change _changes[mostChanges] = {};
    std::size_t _count = 0;
};

} // namespace Halden::System
