#include "Framework/CXX/Diagnostics/LoggingProperties.h"

#include "Framework/CXX/Diagnostics/PathText.h"

#include <utility>

LoggingProperties::LoggingProperties(std::string logDirVariable) : _logDirVariable(std::move(logDirVariable)) {}

void LoggingProperties::writeLoggerHeader() {
    _text << "##############################################################\n"
             "##  SPECIFY LOGGERS TO USE\n"
             "##############################################################\n"
             "# value format = <level>, <appender>\n"
             "# where:\n"
             "#   <level> = DEBUG/INFO/WARN/ERROR/FATAL/OFF\n"
             "#   <appender> = appender specified below\n"
             "##############################################################\n";
}

void LoggingProperties::writeDefaultLoggers(const std::string& level) {
    _text << "\n"
             "# DEFAULT Logger\n"
             "log4j.rootLogger="
          << level
          << ", DEFAULT\n"
             "\n"
             "# DEVICE Logger\n"
             "log4j.logger.DeviceManager="
          << level
          << ", DEVICE\n"
             "log4j.logger.DeviceCommunication="
          << level
          << ", DEVICE\n"
             "log4j.logger.LarkspurWindowsCameraHub.Device="
          << level << ", DEVICE\n";
}

void LoggingProperties::writeLogger(const std::string& name, const std::string& appender, const std::string& level) {
    if (!_writtenLoggers.insert(name).second)
        return;
    _text << "\n# " << name << " Logger\nlog4j.logger." << name << "=" << level << ", " << appender << "\n";
}

void LoggingProperties::writeAppenderHeader() {
    // The folders are those of other systems; the text is the same everywhere.
    _text << R"(
##############################################################
##  SPECIFY APPENDERS USED BY LOGGERS ABOVE
##
##  NOTE:
##   -When the logger is initialized at program start up the diagnostics subsystem looks for the location of logging.properties (this file).
##   -The search order for this location is as follows:
##
##      1) CSIDL_COMMON_APPDATA
##          -WinXP: %ALLUSERSPROFILE%\Application Data\Halden Imaging Group\<appName>
##          -Win7:  %SystemDrive%\ProgramData\Halden Imaging Group\<appName>
##      2) CSIDL_LOCAL_APPDATA
##          -WinXP: %USERPROFILE%\Local Settings\Application Data\Halden Imaging Group\<appName>
##          -Win7:  %USERPROFILE%\AppData\Local\Halden Imaging Group\<appName>
##      3) Working directory (ie. runtime directory of calling dll)
##          -uses hModule
##
##   -By default, the logging.properties file is created at (1), and thus (1) is used.
##
##############################################################
)";
}

void LoggingProperties::writeAppender(const std::string& name) {
    const std::string key = "log4j.appender." + name;
    _text << "\n# " << name << " Appender\n"
          << key << "=org.apache.log4j.FileAppender\n"
          << key << ".File=${" << _logDirVariable << "}/" << name << ".log\n"
          << key << ".Append=false\n"
          << key << ".MaxFileSize=10000KB\n"
          << key << ".MaxBackupIndex=1\n"
          << key << ".layout=org.apache.log4j.PatternLayout\n"
          << key << ".layout.ConversionPattern=%d{%Y-%b-%d %H:%M:%S } [%4t] %-6p %c - %m%n\n";
}

std::string LoggingProperties::text() const { return _text.str(); }

std::string loggingPropertiesOf(const std::string& appName, const std::string& logDirVariable) {
    const std::string level = "INFO";
    LoggingProperties properties(logDirVariable);
    properties.writeLoggerHeader();
    properties.writeDefaultLoggers(level);
    for (const char* const product :
         {"Ormond", "Tessera", "Lattice", "Quarry", "OrmondSE", "FenwickBaseLib", "Fenwick"})
        properties.writeLogger(product, "PRODUCT", level);
    properties.writeLogger("Instrumentation", "TIMING", level);
    properties.writeLogger(Halden::withoutBlanks(appName), "PRODUCT", level);
    properties.writeAppenderHeader();
    for (const char* const appender : {"DEFAULT", "DEVICE", "PRODUCT", "TIMING"})
        properties.writeAppender(appender);
    return properties.text();
}
