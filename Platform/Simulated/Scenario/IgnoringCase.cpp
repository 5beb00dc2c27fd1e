#include "Platform/Simulated/Scenario/IgnoringCase.h"

#include <algorithm>

namespace Platform::Simulated {
namespace {

char16_t lowered(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit - u'A' + u'a') : unit;
}

} // namespace

bool equalIgnoringCase(std::u16string_view left, std::u16string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char16_t a, char16_t b) { return lowered(a) == lowered(b); });
}

} // namespace Platform::Simulated
