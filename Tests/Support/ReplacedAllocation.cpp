#include "Tests/Support/ReplacedAllocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool (*)(std::size_t)> allowed = nullptr;

bool isAllowed(std::size_t size) {
    const auto allows = allowed.load();
    return allows == nullptr || allows(size);
}

void* allocate(std::size_t size) noexcept { return isAllowed(size) ? std::malloc(size == 0 ? 1 : size) : nullptr; }

} // namespace

void allowAllocationsBy(bool (*allows)(std::size_t size)) { allowed = allows; }

// All of them, lest a sanitizer's own be paired with one of these.
void* operator new(std::size_t size) {
    if (void* const memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    const auto unit = static_cast<std::size_t>(alignment);
    if (void* const memory = isAllowed(size) ? std::aligned_alloc(unit, (size + unit - 1) / unit * unit) : nullptr)
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t& /* noThrow */) noexcept { return allocate(size); }

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /* size */) noexcept { std::free(memory); }

void operator delete(void* memory, std::align_val_t /* alignment */) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t /* size */, std::align_val_t /* alignment */) noexcept {
    std::free(memory);
}
