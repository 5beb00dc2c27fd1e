#include "Framework/CXX/Diagnostics/ForgivingAppender.h"

#include <log4cxx/helpers/exception.h>
#include <log4cxx/helpers/loglog.h>

#include <utility>

ForgivingAppender::ForgivingAppender(log4cxx::AppenderPtr appender) : _appender(std::move(appender)) {
    setName(_appender->getName());
}

ForgivingAppender::~ForgivingAppender() { finalize(); }

void ForgivingAppender::close() { _appender->close(); }

void ForgivingAppender::append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool& pool) {
    try {
        _appender->doAppend(event, pool);
    } catch (const log4cxx::helpers::IOException& error) {
        if (!_lossTold.exchange(true))
            log4cxx::helpers::LogLog::error("Lines of the log are lost, appender " + getName(), error);
    }
}
