#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

/// libFuzzer's interface: tries one input, and crashes or aborts if that breaks a rule. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Inputs that make sense, for FuzzMain to begin with.
std::vector<std::string> fuzzSeeds();

/// Ends the process unless the rule holds, also where assertions are off.
inline void require(bool holds, const char* rule) {
    if (holds)
        return;
    std::fprintf(stderr, "Broken: %s\n", rule);
    std::abort();
}
