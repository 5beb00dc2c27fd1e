#pragma once

#include <string>

namespace Halden::System {

/// Turns the exception being handled (`throw;` reaches it) into UTF-8 text; empty for a type that it does not know.
using DescribeException = std::string (*)();

} // namespace Halden::System
