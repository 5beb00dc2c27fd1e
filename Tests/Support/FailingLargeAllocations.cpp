#include "Tests/Support/FailingLargeAllocations.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
std::atomic<std::size_t> failing = none; // bytes
thread_local bool isExempt = false;

} // namespace

FailingLargeAllocations::FailingLargeAllocations(std::size_t size) {
    isExempt = true;
    failing = size;
}

FailingLargeAllocations::~FailingLargeAllocations() {
    failing = none;
    isExempt = false;
}

// Those of the whole program.
void* operator new(std::size_t size) {
    if (size < failing || isExempt)
        if (void* const memory = std::malloc(size == 0 ? 1 : size))
            return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /* size */) noexcept { std::free(memory); }
