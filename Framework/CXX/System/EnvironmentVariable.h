#pragma once

#include <string>
#include <string_view>

namespace Halden::System {

/// The variable's value; the other text if the variable is not set or empty.
std::string environmentVariableOr(const char* name, std::string_view otherwise);

} // namespace Halden::System
