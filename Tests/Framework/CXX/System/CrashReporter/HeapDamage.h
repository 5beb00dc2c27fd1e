#pragma once

namespace CrashTest {

/// Overwrites the C library's own links in freed memory and then asks for memory, so that malloc itself
/// faults, holding the lock of the heap.
void breakHeapSoThatMallocCrashes();

/// Makes the heap unusable in its destructor, or at once: the next allocation faults or aborts.
class HeapBreaker {
public:
    HeapBreaker() = default;
    HeapBreaker(const HeapBreaker&) = delete;
    HeapBreaker& operator=(const HeapBreaker&) = delete;
    ~HeapBreaker() { breakNow(); }

    void breakNow() const;
};

} // namespace CrashTest
