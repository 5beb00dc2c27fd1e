#include "Framework/CXX/Diagnostics/LoggingFile.h"

#include "Framework/CXX/Common/RegularFile.h"
#include "Framework/CXX/Diagnostics/LogDestination.h"
#include "Framework/CXX/Diagnostics/VariableSubstitution.h"

#include <log4cxx/helpers/bytearrayinputstream.h>
#include <log4cxx/helpers/loglog.h>
#include <log4cxx/helpers/stringhelper.h>

#include <memory>
#include <stdexcept>
#include <vector>

namespace Halden {

namespace {

using log4cxx::helpers::Properties;
using log4cxx::helpers::StringHelper;

// The library's work grows with the square of the file, and of the parts of a logger's name. The generated file has
// some 4000 bytes.
constexpr std::size_t longestFile = 64UL * 1024; // bytes
constexpr std::size_t longestName = 256;         // bytes

LoggingSettings parse(const std::string& bytes) {
    Properties properties;
    properties.load(std::make_shared<log4cxx::helpers::ByteArrayInputStream>(
        std::vector<unsigned char>(bytes.begin(), bytes.end())));
    LoggingSettings settings;
    for (const std::string& name : properties.propertyNames())
        settings.emplace(name, properties.getProperty(name));
    return settings;
}

// An appender's "File" or "FileName", and its policy's "ActiveFileName", in whatever case.
bool namesLogFile(const std::string& setting) {
    const std::string name = StringHelper::toLowerCase(setting);
    return name.starts_with("log4j.appender.") && (name.ends_with(".file") || name.ends_with("filename"));
}

LoggingSettings readSettings(const std::string& file) {
    const FileReading reading = readRegularFile(file, longestFile);
    if (reading.error != 0)
        throw std::runtime_error(std::string(reading.operation) + " on " + file + ": " + reading.reason);
    LoggingSettings settings = parse(reading.bytes);
    for (const auto& [name, value] : settings)
        if (name.size() > longestName)
            throw std::runtime_error(file + ": " + name.substr(0, longestName) + "...: the name is too long");
    try {
        return withVariablesReplaced(settings);
    } catch (const EndlessValue& error) {
        throw std::runtime_error(file + ": " + error.what());
    }
}

} // namespace

void loadLoggingFile(const std::string& file, Properties& settings) {
    for (const auto& [name, value] : readSettings(file))
        if (namesLogFile(name) && !mayBeLogFile(value))
            log4cxx::helpers::LogLog::error(
                std::string(name).append("=").append(value).append(": it is no regular file"));
        else
            settings.setProperty(name, asLiteralValue(value));
    settings.setProperty(literalDollar, literalDollar);
}

} // namespace Halden
