#pragma once

#include <string>

// What the process's loggers write to. A line that is logged meanwhile reaches the old destination or the new one, or
// both at the moment of the change. Destinations of the configuration before are closed. One thread at a time.
namespace Halden {

/// Configures from a file in the syntax of log4cxx::PropertyConfigurator. Where the file can't be used, all stays as it
/// was, which is told there and on standard error. UTF-8.
void configureLogging(const std::string& propertiesFile);

/// Configures without a file: to standard output.
void configureBasicLogging();

} // namespace Halden
