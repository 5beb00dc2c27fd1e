#include "Tests/Support/ReplacedAllocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool (*)(std::size_t)> allowed = nullptr;

void* allocate(std::size_t size) noexcept {
    const auto allows = allowed.load();
    return allows == nullptr || allows(size) ? std::malloc(size == 0 ? 1 : size) : nullptr;
}

} // namespace

void allowAllocationsBy(bool (*allows)(std::size_t size)) { allowed = allows; }

// All of them, lest a sanitizer's own be paired with one of these.
void* operator new(std::size_t size) {
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t& /* noThrow */) noexcept { return allocate(size); }

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /* size */) noexcept { std::free(memory); }
