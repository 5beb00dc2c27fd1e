#include "Framework/CXX/Common/RunCatch.h"

#include "Framework/CXX/Common/TextConversion.h"

#include <log4cxx/logger.h>

#include <utility>

namespace Halden {

namespace {

// The name of this source as the log gives it: the same wherever the tree was built.
constexpr const char* sourceName = "Framework/CXX/Common/RunCatch";

/// On first use, not when the program starts: the first logger that log4cxx is asked for before it has been given
/// its configuration makes it read one of its own from the folder in which the program was started.
const log4cxx::LoggerPtr& runCatchLogger() {
    static const log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("Common.RunCatch");
    return logger;
}

void logCaughtException(const std::string& description) {
    const log4cxx::LoggerPtr& logger = runCatchLogger();
    if (!log4cxx::Logger::isErrorEnabledFor(logger))
        return;
    log4cxx::helpers::MessageBuffer buffer;
    const log4cxx::spi::LocationInfo location(sourceName, log4cxx::spi::LocationInfo::calcShortFileName(sourceName),
                                              static_cast<const char*>(__PRETTY_FUNCTION__), __LINE__);
    logger->forcedLog(log4cxx::Level::getError(), buffer.str(buffer << "Caught exception: " << description), location);
}

std::vector<CatchHandler> handlers{logCaughtException};

} // namespace

HaldenExceptionBase::HaldenExceptionBase(std::u16string text, std::string sourceFile, int sourceLine)
    : message(std::move(text)), file(std::move(sourceFile)), line(sourceLine) {}

std::u16string HaldenExceptionBase::getDescription() const {
    std::u16string description = message;
    if (line != unknownLine) {
        description += u" @ ";
        for (const char byte : file)
            description += static_cast<char16_t>(static_cast<unsigned char>(byte));
        description += u":" + toUtf16(std::to_string(line));
    }
    return description;
}

std::string HaldenExceptionBase::getDescriptionUtf8() const { return toUtf8(getDescription()); }

HaldenException::HaldenException(std::u16string text) : HaldenExceptionBase(std::move(text), {}, unknownLine) {}

std::vector<CatchHandler>& catchHandlers() { return handlers; }

std::string describeException(std::exception_ptr exception) {
    if (!exception)
        return {};
    try {
        std::rethrow_exception(std::move(exception));
    } catch (const HaldenException& caught) {
        return caught.getDescriptionUtf8();
    } catch (const std::exception& caught) {
        return caught.what();
    } catch (...) {
        return "(...) No details";
    }
}

void handleCurrentException(bool rethrow) {
    const std::exception_ptr exception = std::current_exception();
    const std::string description = describeException(exception);
    for (const CatchHandler& handler : catchHandlers())
        handler(description);
    if (rethrow)
        std::rethrow_exception(exception);
}

} // namespace Halden
