#pragma once

/// While it lives, the first so many allocations of the thread that made it succeed, and all others fail with
/// std::bad_alloc. One at a time.
class FailingAllocations {
public:
    explicit FailingAllocations(int succeeding);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    /// Whether an allocation has failed so far.
    bool haveHappened() const;
};
