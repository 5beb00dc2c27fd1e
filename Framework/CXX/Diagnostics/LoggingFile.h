#pragma once

#include <log4cxx/helpers/properties.h>

#include <stdexcept>
#include <string>

namespace Halden {

/// The text tells the file and the reason.
class UnusableLoggingFile : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Adds the settings of a logging configuration file, in which the library finds nothing that would hold it up: no
/// variables without end, no log file that is a pipe. What is left out is told on standard error. UTF-8.
void loadLoggingFile(const std::string& file, log4cxx::helpers::Properties& settings);

} // namespace Halden
