#pragma once

#include <cstddef>

/// While it lives, `new` finds no memory for that many bytes or more, on all threads but the one that made it. One at a
/// time.
class FailingLargeAllocations {
public:
    explicit FailingLargeAllocations(std::size_t size);
    ~FailingLargeAllocations();
    FailingLargeAllocations(const FailingLargeAllocations&) = delete;
    FailingLargeAllocations& operator=(const FailingLargeAllocations&) = delete;
};
