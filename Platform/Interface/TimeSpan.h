#pragma once

#include <chrono>
#include <cstdint>
#include <ratio>

namespace Platform {

/// The platform's unit of time: ticks of 100 nanoseconds, signed. Exposure times are above 0.
using TimeSpan = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

} // namespace Platform
