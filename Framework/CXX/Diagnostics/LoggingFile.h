#pragma once

#include <log4cxx/helpers/properties.h>

#include <string>

namespace Halden {

/// Adds the settings of a logging configuration file, in which the library finds nothing that would hold it up: no
/// variables without end, no log file that is a pipe. What is left out is told on standard error. Throws a
/// std::runtime_error that tells the file and the reason if it can't be used. UTF-8.
void loadLoggingFile(const std::string& file, log4cxx::helpers::Properties& settings);

} // namespace Halden
