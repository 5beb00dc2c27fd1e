#include "Tests/Platform/Imaging/Png/InstructionSets.h"

#define HWY_WANT_AVX3_DL 1 // as TokenWriter.cpp has it
#include <hwy/highway.h>

namespace Platform::Imaging::Png {
namespace {

/// The choice is made anew afterwards.
struct Choice {
    Choice() = default;
    ~Choice() { hwy::GetChosenTarget().DeInit(); }
    Choice(const Choice&) = delete;
    Choice& operator=(const Choice&) = delete;
};

} // namespace

void withEachInstructionSet(const std::function<void(const char* name)>& run) {
    const Choice choice;
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        // With those below it, as on a machine: not every part is compiled for each of them. The lowest bit is the
        // best.
        hwy::GetChosenTarget().Update(hwy::SupportedTargets() & ~(target - 1));
        run(hwy::TargetName(target));
    }
}

const char* plainInstructionSet() { return hwy::TargetName(HWY_STATIC_TARGET); }

} // namespace Platform::Imaging::Png
