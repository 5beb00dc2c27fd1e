#include "Tests/Framework/CXX/System/CrashReporter/HeapDamage.h"

#include <cstdint>
#include <cstdlib>
#include <thread>

namespace CrashTest {

namespace {

// Beyond what the per-thread cache keeps, so that freed blocks go to the lists of the heap.
constexpr std::size_t blockSize = 4000;
/// Hides from the compiler where the words come from: it would rightly object to what is done with them.
volatile std::uint64_t* inSecret(void* memory) {
    volatile std::uint64_t* volatile hidden = static_cast<std::uint64_t*>(memory);
    return hidden;
}

constexpr std::uint64_t badLink = 0x4141414141414141;

/// A freed block begins with the links to its neighbours in the list: forward, backward.
void damageLists() {
    void* volatile separator = std::malloc(blockSize); // freed neighbours would be joined
    void* const block = std::malloc(blockSize);
    volatile std::uint64_t* const links = inSecret(block);
    separator = std::malloc(blockSize);
    std::free(block);
    links[0] = badLink;
    links[1] = badLink;
    static_cast<void>(separator);
}

} // namespace

void breakHeapSoThatMallocCrashes() {
    std::thread([] {}).join(); // with one thread only, the C library would not lock
    damageLists();
    void* volatile memory = std::malloc(blockSize * 2);
    static_cast<void>(memory);
}

void HeapBreaker::breakNow() const {
    // Small blocks come from a cache of the thread, one list a size. A damaged link that is taken over as
    // the head of its list makes the next request of that size fault or abort.
    constexpr std::size_t largestSmallBlock = 1024;
    for (std::size_t size = 24; size <= largestSmallBlock; size += 16) {
        void* const first = std::malloc(size);
        void* const second = std::malloc(size);
        volatile std::uint64_t* const link = inSecret(second);
        std::free(first);
        std::free(second);
        link[0] = badLink;
        void* volatile taken = std::malloc(size);
        static_cast<void>(taken);
    }
    damageLists();
}

} // namespace CrashTest
