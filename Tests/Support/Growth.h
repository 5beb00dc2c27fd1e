#pragma once

#include <cstddef>
#include <functional>
#include <ostream>
#include <string>

/// Makes the input of a size in bytes; what it returns is the work on it, which may be done again and again.
using WorkOfSize = std::function<std::function<void()>(std::size_t)>;

/// How many times as long the work takes at 1000 kB as at 100 kB: about 10 where it grows as its input does, about 100
/// where it grows with the square. Counts the processor's time of the calling thread alone, so that a busy machine
/// doesn't matter; the making of the input is not counted.
double growth(const WorkOfSize& prepare);

/// What growth() stays below where the work is linear, with room for caches that the larger input no longer fits into.
inline constexpr double linearGrowth = 40;

/// A kind of text for tests that have a table of them: the beginning, the piece as often as it takes, the end.
struct GrowingText {
    const char* name; ///< fit for the name of a test
    std::string begin;
    std::string piece; ///< a "#" in it counts up
    std::string end;

    /// With about so many bytes.
    std::string ofSize(std::size_t size) const;
};

inline std::ostream& operator<<(std::ostream& out, const GrowingText& text) { return out << text.name; }
