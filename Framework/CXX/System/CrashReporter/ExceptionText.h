#pragma once

#include "Framework/CXX/System/CrashReporter/DescribeException.h"
#include "Framework/CXX/System/CrashReporter/RawText.h"

namespace Halden::System {

/// What is known of an uncaught exception.
struct ExceptionText {
    RawText<500> type; ///< as written in C++; mangled if it could not be turned back; empty: no exception
    RawText<3000> text;
};

/// Describes the exception being handled, with what is nested in it. Fills in what is certain first (the
/// mangled type, which takes no memory), so that something stands there if a broken heap ends the work
/// half-way. Neither what() nor the describing function may throw out of here.
void describeCurrentException(ExceptionText& result, DescribeException describe) noexcept;

} // namespace Halden::System
