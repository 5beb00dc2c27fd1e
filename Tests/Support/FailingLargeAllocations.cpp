#include "Tests/Support/FailingLargeAllocations.h"

#include "Tests/Support/ReplacedAllocation.h"

#include <atomic>

namespace {

std::atomic<std::size_t> failing; // bytes
thread_local bool isExempt = false;

} // namespace

FailingLargeAllocations::FailingLargeAllocations(std::size_t size) {
    isExempt = true;
    failing = size;
    allowAllocationsBy([](std::size_t wanted) { return wanted < failing || isExempt; });
}

FailingLargeAllocations::~FailingLargeAllocations() {
    allowAllocationsBy(nullptr);
    isExempt = false;
}
