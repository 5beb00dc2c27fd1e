#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

/// A target's: tries one input, and crashes or aborts if that breaks a rule.
void fuzz(const std::uint8_t* data, std::size_t size);

/// A target's: inputs that make sense, for FuzzMain to begin with.
std::vector<std::string> fuzzSeeds();

/// libFuzzer's interface: fuzz() within a limited time, which grows with the size alone. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// The largest part of its limit that an input has taken so far, and that input's size in bytes.
struct SlowestInput {
    double share = 0;
    std::size_t size = 0;
};
SlowestInput slowestInput();

/// Ends the process unless the rule holds, also where assertions are off.
inline void require(bool holds, const char* rule) {
    if (holds)
        return;
    std::fprintf(stderr, "Broken: %s\n", rule);
    std::abort();
}
