#include "Tests/Support/LogRecorder.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/spi/loggingevent.h>

#include <algorithm>
#include <mutex>
#include <utility>

std::ostream& operator<<(std::ostream& out, const LogRecord& record) {
    return out << record.level << ' ' << record.logger << " - " << record.message << " (" << record.file << ')';
}

class LogRecorder::Appender final : public log4cxx::AppenderSkeleton {
public:
    void close() override {}
    bool requiresLayout() const override { return false; }

    std::vector<LogRecord> records() const {
        const std::lock_guard lock(_mutex);
        return _records;
    }

    void clear() {
        const std::lock_guard lock(_mutex);
        _records.clear();
    }

protected:
    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override {
        const char* const file = event->getLocationInformation().getFileName();
        LogRecord record{event->getLevel()->toString(), event->getLoggerName(), event->getRenderedMessage(),
                         file ? file : ""};
        const std::lock_guard lock(_mutex);
        _records.push_back(std::move(record));
    }

private:
    mutable std::mutex _mutex;
    std::vector<LogRecord> _records;
};

LogRecorder::LogRecorder(log4cxx::LoggerPtr logger, log4cxx::LevelPtr level)
    : _logger(std::move(logger)), _previousLevel(_logger->getLevel()), _appender(std::make_shared<Appender>()) {
    _logger->addAppender(_appender);
    _logger->setLevel(level);
}

LogRecorder::LogRecorder(const std::string& loggerName, log4cxx::LevelPtr level)
    : LogRecorder(loggerName.empty() ? log4cxx::Logger::getRootLogger() : log4cxx::Logger::getLogger(loggerName),
                  std::move(level)) {}

LogRecorder::~LogRecorder() {
    _logger->removeAppender(_appender);
    _logger->setLevel(_previousLevel);
}

std::vector<LogRecord> LogRecorder::records() const { return _appender->records(); }

std::vector<std::string> LogRecorder::messages() const {
    std::vector<std::string> texts;
    for (const LogRecord& record : records())
        texts.push_back(record.message);
    return texts;
}

bool LogRecorder::contains(const std::string& level, const std::string& logger, const std::string& message) const {
    const std::vector<LogRecord> all = records();
    return std::any_of(all.begin(), all.end(), [&](const LogRecord& record) {
        return record.level == level && record.logger == logger && record.message == message;
    });
}

void LogRecorder::clear() { _appender->clear(); }
