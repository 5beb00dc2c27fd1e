#include "Tests/Framework/CXX/Diagnostics/FailingAllocations.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr int all = std::numeric_limits<int>::max();
thread_local int succeeding = all;
thread_local bool failed = false;

void* allocate(std::size_t size) noexcept {
    if (succeeding == 0) {
        failed = true;
        return nullptr;
    }
    if (succeeding != all)
        --succeeding;
    return std::malloc(size == 0 ? 1 : size);
}

} // namespace

FailingAllocations::FailingAllocations(int count) {
    succeeding = count;
    failed = false;
}

FailingAllocations::~FailingAllocations() { succeeding = all; }

bool FailingAllocations::haveHappened() const { return failed; }

// Those of the whole program.
void* operator new(std::size_t size) {
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t& /* noThrow */) noexcept { return allocate(size); }

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /* size */) noexcept { std::free(memory); }
