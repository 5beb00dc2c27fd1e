#pragma once

#include <cstddef>

/// Asked for each `new` of the whole program, on the thread that it happens on: false lets it fail. Must not allocate.
/// nullptr, as at first, lets all succeed. Any thread.
void allowAllocationsBy(bool (*allows)(std::size_t size));
