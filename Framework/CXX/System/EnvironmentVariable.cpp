#include "Framework/CXX/System/EnvironmentVariable.h"

#include <cstdlib>

namespace Halden::System {

std::string environmentVariableOr(const char* name, std::string_view otherwise) {
    const char* const value = std::getenv(name);
    return std::string(value != nullptr && *value != '\0' ? std::string_view(value) : otherwise);
}

} // namespace Halden::System
