#pragma once

#include <log4cxx/level.h>
#include <log4cxx/logger.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

struct LogRecord {
    std::string level; ///< "DEBUG", "INFO", "WARN", "ERROR"
    std::string logger;
    std::string message;
    std::string file; ///< the location's source file, as the log gives it

    bool operator==(const LogRecord&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const LogRecord& record);
};

/// Records what a logger and its children log, at the chosen level, for as long as it lives; then gives
/// the logger its old level back. Events may come from any thread.
class LogRecorder {
public:
    explicit LogRecorder(log4cxx::LoggerPtr logger, log4cxx::LevelPtr level = log4cxx::Level::getDebug());
    /// By the logger's name; the empty name is the root logger, which sees everything.
    explicit LogRecorder(const std::string& loggerName, log4cxx::LevelPtr level = log4cxx::Level::getDebug());
    ~LogRecorder();
    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    /// All events so far, in order.
    std::vector<LogRecord> records() const;
    /// Their messages alone.
    std::vector<std::string> messages() const;
    /// Whether an event of this level, logger and message is among them.
    bool contains(const std::string& level, const std::string& logger, const std::string& message) const;
    void clear();

private:
    class Appender;

    log4cxx::LoggerPtr _logger;
    log4cxx::LevelPtr _previousLevel;
    std::shared_ptr<Appender> _appender;
};
