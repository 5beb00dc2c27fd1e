#pragma once

#include <cstddef>
#include <functional>

/// Makes the input of a size in bytes; what it returns is the work on it, which may be done again and again.
using WorkOfSize = std::function<std::function<void()>(std::size_t)>;

/// How many times as long the work takes at 1000 kB as at 100 kB: about 10 where it grows as its input does, about 100
/// where it grows with the square. Counts the processor's time of the calling thread alone, so that a busy machine
/// doesn't matter; the making of the input is not counted.
double growth(const WorkOfSize& prepare);

/// What growth() stays below where the work is linear, with room for caches that the larger input no longer fits into.
inline constexpr double linearGrowth = 40;
