#include "Tests/Support/FailingLargeAllocations.h"

#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t none = std::numeric_limits<std::size_t>::max();
std::atomic<std::size_t> failing = none; // bytes
thread_local bool isExempt = false;

void* allocate(std::size_t size) noexcept {
    return size < failing || isExempt ? std::malloc(size == 0 ? 1 : size) : nullptr;
}

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
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t& /* noThrow */) noexcept { return allocate(size); }

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /* size */) noexcept { std::free(memory); }
