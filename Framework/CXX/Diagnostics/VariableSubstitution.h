#pragma once

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>

namespace Halden {

using LoggingSettings = std::map<std::string, std::string>; ///< UTF-8

/// The value refers to itself, through however many others, or becomes too long.
class EndlessValue : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A copy of the settings in which each ${NAME} in a value is replaced: by the environment's value, else by that of the
/// setting with this name and what is replaced in it, else by nothing. A value with a brace that nothing closes stays
/// as it is, which is told on standard error.
LoggingSettings withVariablesReplaced(const LoggingSettings& settings);

/// The value in a form in which the logging library, which replaces variables itself, arrives at just this text. The
/// other settings need `literalDollar` for that.
std::string asLiteralValue(const std::string& text);
inline constexpr const char* literalDollar = "$"; ///< both the name of the setting and its value

} // namespace Halden
