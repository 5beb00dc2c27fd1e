#pragma once

#include <json/value.h>

#include <string>

namespace Halden {

/// Reads one message: any value at the root, comments passed over, what follows the first value ignored.
/// False if it is no JSON or nested too deep for the library (more than 1000 levels); then root is to
/// be left alone and formattedErrors holds the report for the log, one line for each error.
bool parseMessage(const std::string& text, Json::Value& root, std::string& formattedErrors);

} // namespace Halden
