#include "Framework/CXX/Diagnostics/LoggingConfiguration.h"

#include "Framework/CXX/Diagnostics/ForgivingAppender.h"
#include "Framework/CXX/Diagnostics/LoggingFile.h"

#include <log4cxx/basicconfigurator.h>
#include <log4cxx/helpers/loglog.h>
#include <log4cxx/hierarchy.h>
#include <log4cxx/logger.h>
#include <log4cxx/logmanager.h>
#include <log4cxx/propertyconfigurator.h>

#include <algorithm>
#include <exception>
#include <map>
#include <memory>
#include <vector>

namespace Halden {

namespace {

using log4cxx::AppenderPtr;
using log4cxx::LoggerPtr;

std::vector<LoggerPtr> allLoggers(const log4cxx::spi::LoggerRepositoryPtr& repository) {
    std::vector<LoggerPtr> loggers = repository->getCurrentLoggers();
    loggers.push_back(repository->getRootLogger());
    return loggers;
}

// One forgiving appender for each configured one, however many loggers share it.
class ForgivingAppenders {
public:
    AppenderPtr of(const AppenderPtr& appender) {
        AppenderPtr& forgiving = _forgiving[appender];
        if (!forgiving)
            forgiving = std::make_shared<ForgivingAppender>(appender);
        return forgiving;
    }

private:
    std::map<AppenderPtr, AppenderPtr> _forgiving;
};

struct Attachment {
    LoggerPtr logger;
    AppenderPtr appender;
};

std::vector<Attachment> attachments(const std::vector<LoggerPtr>& loggers) {
    std::vector<Attachment> found;
    for (const LoggerPtr& logger : loggers)
        for (const AppenderPtr& appender : logger->getAllAppenders())
            found.push_back({logger, appender});
    return found;
}

// An appender that nothing holds any more closes its file.
void detach(const std::vector<Attachment>& old) {
    for (const Attachment& attachment : old)
        attachment.logger->removeAppender(attachment.appender);
}

std::vector<Attachment> attachmentsOfEarlierConfiguration() {
    std::vector<Attachment> found = attachments(allLoggers(log4cxx::LogManager::getLoggerRepository()));
    std::erase_if(found, [](const Attachment& attachment) {
        return std::dynamic_pointer_cast<ForgivingAppender>(attachment.appender) == nullptr;
    });
    return found;
}

void tellThatLogStays(const std::exception& error) {
    static const LoggerPtr logger = log4cxx::Logger::getLogger("Diagnostics.LoggingConfiguration");
    const std::string text =
        std::string("The log stays as it was, for its configuration can't be used: ") + error.what();
    log4cxx::helpers::LogLog::error(text);
    LOG4CXX_ERROR(logger, text);
}

// The library replaces a logger's appenders by removing the old ones first, and closes those that other loggers still
// hold: lines of other threads would be lost. So the file configures loggers that nobody uses, and what they got moves
// to the real ones, new appenders before the old ones go.
void takeOver(const log4cxx::spi::LoggerRepositoryPtr& configured) {
    const log4cxx::spi::LoggerRepositoryPtr real = log4cxx::LogManager::getLoggerRepository();
    std::vector<Attachment> old = attachmentsOfEarlierConfiguration();
    ForgivingAppenders forgiving;
    for (const LoggerPtr& source : allLoggers(configured)) {
        const bool isRoot = source == configured->getRootLogger();
        const LoggerPtr target = isRoot ? real->getRootLogger() : real->getLogger(source->getName());
        std::ranges::copy(attachments({target}), std::back_inserter(old));
        for (const AppenderPtr& appender : source->getAllAppenders()) {
            target->addAppender(forgiving.of(appender));
            source->removeAppender(appender); // or it would be closed when its logger goes
        }
        // Other threads read these two without a lock: they are not written without need.
        if (source->getLevel() != target->getLevel())
            target->setLevel(source->getLevel());
        if (source->getAdditivity() != target->getAdditivity())
            target->setAdditivity(source->getAdditivity());
    }
    real->setThreshold(configured->getThreshold());
    detach(old);
}

} // namespace

void configureLogging(const std::string& propertiesFile) {
    // Whatever comes of it: the library would look for a file of its own.
    log4cxx::LogManager::getLoggerRepository()->setConfigured(true);
    const log4cxx::spi::LoggerRepositoryPtr configured = log4cxx::Hierarchy::create();
    try {
        log4cxx::helpers::Properties settings;
        loadLoggingFile(propertiesFile, settings);
        log4cxx::PropertyConfigurator().doConfigure(settings, configured);
    } catch (const std::exception& error) {
        tellThatLogStays(error);
        return;
    }
    takeOver(configured);
}

void configureBasicLogging() {
    const std::vector<Attachment> old = attachmentsOfEarlierConfiguration();
    log4cxx::BasicConfigurator::configure();
    detach(old);
}

} // namespace Halden
