#pragma once

#include <functional>

namespace Platform::Imaging::Png {

/// Runs with each instruction set in turn that the encoder is compiled for and this machine has, the best first and the
/// plain one last; gives its name. One thread at a time: the choice is the process's.
void withEachInstructionSet(const std::function<void(const char* name)>& run);

/// The one that every machine has.
const char* plainInstructionSet();

} // namespace Platform::Imaging::Png
