#pragma once

#include <log4cxx/appenderskeleton.h>

#include <atomic>

/// Passes events on to another appender, and drops those that it can't write: a full disk costs lines of the log, not
/// the process. The first loss is told on standard error. Any thread.
class ForgivingAppender final : public log4cxx::AppenderSkeleton {
public:
    explicit ForgivingAppender(log4cxx::AppenderPtr appender);
    ~ForgivingAppender() override;

    void close() override;
    bool requiresLayout() const override { return false; }

protected:
    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool& pool) override;

private:
    const log4cxx::AppenderPtr _appender;
    std::atomic<bool> _lossTold = false;
};
