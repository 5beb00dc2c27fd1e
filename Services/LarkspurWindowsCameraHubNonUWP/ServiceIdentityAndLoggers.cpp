#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

const std::string& applicationName() {
    static const std::string name = "Larkspur Windows Camera Hub";
    return name;
}

const std::string& applicationVersion() {
    static const std::string version = "2.9";
    return version;
}

log4cxx::LoggerPtr serviceLogger() {
    static const log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("LarkspurWindowsCameraHub.Service");
    return logger;
}

log4cxx::LoggerPtr deviceLogger() {
    static const log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("LarkspurWindowsCameraHub.Device");
    return logger;
}

log4cxx::LoggerPtr communicationLogger() {
    static const log4cxx::LoggerPtr logger =
        log4cxx::Logger::getLogger("LarkspurWindowsCameraHub.Device.Communication");
    return logger;
}
