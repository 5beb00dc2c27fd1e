#pragma once

/// While it lives, the first so many allocations of its thread succeed, and all others fail with std::bad_alloc.
class FailingAllocations {
public:
    explicit FailingAllocations(int succeeding);
    ~FailingAllocations();
    FailingAllocations(const FailingAllocations&) = delete;
    FailingAllocations& operator=(const FailingAllocations&) = delete;

    /// Whether an allocation has failed so far.
    bool haveHappened() const;
};
