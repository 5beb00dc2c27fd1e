#pragma once

namespace CommandLine {

/// All of the program; the code that it ends with.
int runProgram(int count, const char* const* texts);

} // namespace CommandLine
