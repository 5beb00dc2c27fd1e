#pragma once

#include <set>
#include <sstream>
#include <string>

/// Composes the text of the logging configuration file that the hub makes when it finds none. All text is UTF-8.
class LoggingProperties {
public:
    /// `logDirVariable` names the environment variable that holds the log folder.
    explicit LoggingProperties(std::string logDirVariable);

    void writeLoggerHeader();

    /// The loggers that every application has, root first.
    void writeDefaultLoggers(const std::string& level);

    /// Writes nothing for a name that it has written before.
    void writeLogger(const std::string& name, const std::string& appender, const std::string& level);

    void writeAppenderHeader();
    void writeAppender(const std::string& name);

    std::string text() const;

private:
    std::string _logDirVariable;
    std::set<std::string> _writtenLoggers;
    std::ostringstream _text;
};

/// The whole text, for an application of that name.
std::string loggingPropertiesOf(const std::string& appName, const std::string& logDirVariable);
