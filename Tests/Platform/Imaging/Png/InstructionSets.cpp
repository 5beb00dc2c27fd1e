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
        hwy::GetChosenTarget().Update(target);
        run(hwy::TargetName(target));
    }
}

const char* plainInstructionSet() { return hwy::TargetName(HWY_STATIC_TARGET); }

} // namespace Platform::Imaging::Png
