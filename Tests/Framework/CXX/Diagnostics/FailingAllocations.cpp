#include "Tests/Framework/CXX/Diagnostics/FailingAllocations.h"

#include "Tests/Support/ReplacedAllocation.h"

#include <cstddef>
#include <limits>

namespace {

constexpr int all = std::numeric_limits<int>::max();
thread_local int succeeding = all;
thread_local bool failed = false;

bool isAllowed(std::size_t /* size */) {
    if (succeeding == 0) {
        failed = true;
        return false;
    }
    if (succeeding != all)
        --succeeding;
    return true;
}

} // namespace

FailingAllocations::FailingAllocations(int count) {
    succeeding = count;
    failed = false;
    allowAllocationsBy(isAllowed);
}

FailingAllocations::~FailingAllocations() {
    allowAllocationsBy(nullptr);
    succeeding = all;
}

bool FailingAllocations::haveHappened() const { return failed; }
