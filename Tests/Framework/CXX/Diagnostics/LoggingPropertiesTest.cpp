#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/HaldenDiagnostics.h"
#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace {

/// Keeps the text that would go to the file.
class RecordingDiagnostics : public HaldenDiagnostics {
public:
    explicit RecordingDiagnostics(const std::string& appName)
        : HaldenDiagnostics(Halden::toUtf16(appName), u"2.9", u"", nullptr) {}

    void writeLoggingProperties(const std::string& composed, const std::u16string& folder) override {
        text = composed;
        writtenTo = folder;
    }

    std::string text;
    std::u16string writtenTo;
};

std::string propertiesOf(const std::string& appName) {
    RecordingDiagnostics diagnostics(appName);
    diagnostics.generateLoggingProperties(appName, u"/folder");
    return diagnostics.text;
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
        ++found;
    return found;
}

const std::string expectedText = R"(##############################################################
##  SPECIFY LOGGERS TO USE
##############################################################
# value format = <level>, <appender>
# where:
#   <level> = DEBUG/INFO/WARN/ERROR/FATAL/OFF
#   <appender> = appender specified below
##############################################################

# DEFAULT Logger
log4j.rootLogger=INFO, DEFAULT

# DEVICE Logger
log4j.logger.DeviceManager=INFO, DEVICE
log4j.logger.DeviceCommunication=INFO, DEVICE
log4j.logger.LarkspurWindowsCameraHub.Device=INFO, DEVICE

# Ormond Logger
log4j.logger.Ormond=INFO, PRODUCT

# Tessera Logger
log4j.logger.Tessera=INFO, PRODUCT

# Lattice Logger
log4j.logger.Lattice=INFO, PRODUCT

# Quarry Logger
log4j.logger.Quarry=INFO, PRODUCT

# OrmondSE Logger
log4j.logger.OrmondSE=INFO, PRODUCT

# FenwickBaseLib Logger
log4j.logger.FenwickBaseLib=INFO, PRODUCT

# Fenwick Logger
log4j.logger.Fenwick=INFO, PRODUCT

# Instrumentation Logger
log4j.logger.Instrumentation=INFO, TIMING

# LarkspurWindowsCameraHub Logger
log4j.logger.LarkspurWindowsCameraHub=INFO, PRODUCT

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

# DEFAULT Appender
log4j.appender.DEFAULT=org.apache.log4j.FileAppender
log4j.appender.DEFAULT.File=${LARKSPURWINDOWSCAMERAHUB_LOG_DIR}/DEFAULT.log
log4j.appender.DEFAULT.Append=false
log4j.appender.DEFAULT.MaxFileSize=10000KB
log4j.appender.DEFAULT.MaxBackupIndex=1
log4j.appender.DEFAULT.layout=org.apache.log4j.PatternLayout
log4j.appender.DEFAULT.layout.ConversionPattern=%d{%Y-%b-%d %H:%M:%S } [%4t] %-6p %c - %m%n

# DEVICE Appender
log4j.appender.DEVICE=org.apache.log4j.FileAppender
log4j.appender.DEVICE.File=${LARKSPURWINDOWSCAMERAHUB_LOG_DIR}/DEVICE.log
log4j.appender.DEVICE.Append=false
log4j.appender.DEVICE.MaxFileSize=10000KB
log4j.appender.DEVICE.MaxBackupIndex=1
log4j.appender.DEVICE.layout=org.apache.log4j.PatternLayout
log4j.appender.DEVICE.layout.ConversionPattern=%d{%Y-%b-%d %H:%M:%S } [%4t] %-6p %c - %m%n

# PRODUCT Appender
log4j.appender.PRODUCT=org.apache.log4j.FileAppender
log4j.appender.PRODUCT.File=${LARKSPURWINDOWSCAMERAHUB_LOG_DIR}/PRODUCT.log
log4j.appender.PRODUCT.Append=false
log4j.appender.PRODUCT.MaxFileSize=10000KB
log4j.appender.PRODUCT.MaxBackupIndex=1
log4j.appender.PRODUCT.layout=org.apache.log4j.PatternLayout
log4j.appender.PRODUCT.layout.ConversionPattern=%d{%Y-%b-%d %H:%M:%S } [%4t] %-6p %c - %m%n

# TIMING Appender
log4j.appender.TIMING=org.apache.log4j.FileAppender
log4j.appender.TIMING.File=${LARKSPURWINDOWSCAMERAHUB_LOG_DIR}/TIMING.log
log4j.appender.TIMING.Append=false
log4j.appender.TIMING.MaxFileSize=10000KB
log4j.appender.TIMING.MaxBackupIndex=1
log4j.appender.TIMING.layout=org.apache.log4j.PatternLayout
log4j.appender.TIMING.layout.ConversionPattern=%d{%Y-%b-%d %H:%M:%S } [%4t] %-6p %c - %m%n
)";

TEST(LoggingPropertiesTest, TheTextIsExactlyThis) {
    EXPECT_EQ(propertiesOf("Larkspur Windows Camera Hub"), expectedText);
}

class LoggingPropertiesOnDiskTest : public DiagnosticsFixture {};

TEST_F(LoggingPropertiesOnDiskTest, AreExactlyThisTextAfterAFirstStart) {
    ASSERT_NE(makeDiagnostics(), nullptr);
    EXPECT_EQ(readFile(propertiesFile()), expectedText);
}

TEST(LoggingPropertiesTest, GoToTheFolderGiven) {
    RecordingDiagnostics diagnostics("Larkspur Windows Camera Hub");
    diagnostics.generateLoggingProperties("Larkspur Windows Camera Hub", u"/folder");
    EXPECT_EQ(diagnostics.writtenTo, u"/folder");
}

TEST(LoggingPropertiesTest, HaveThirteenLoggersAndFourAppenders) {
    const std::string text = propertiesOf("Larkspur Windows Camera Hub");
    EXPECT_EQ(count(text, "\nlog4j.logger.") + count(text, "\nlog4j.rootLogger="), 13U);
    EXPECT_EQ(count(text, "=org.apache.log4j.FileAppender\n"), 4U);
}

TEST(LoggingPropertiesTest, AnApplicationWithATablesNameHasOneEntryInTheTablesPlace) {
    const std::string text = propertiesOf("Tessera");
    EXPECT_EQ(count(text, "# Tessera Logger\n"), 1U);
    EXPECT_EQ(count(text, "log4j.logger.Tessera=INFO, PRODUCT\n"), 1U);
    EXPECT_LT(text.find("log4j.logger.Tessera="), text.find("log4j.logger.Lattice="));
    EXPECT_NE(text.find("log4j.logger.Instrumentation=INFO, TIMING\n\n####"), std::string::npos);
}

TEST(LoggingPropertiesTest, OtherSpellingsAreOtherNames) {
    EXPECT_EQ(count(propertiesOf("tessera"), "essera Logger\n"), 2U);
}

TEST(LoggingPropertiesTest, TheDeviceLineStandsWhateverTheApplicationIs) {
    const std::string text = propertiesOf("Some Other App");
    EXPECT_EQ(count(text, "log4j.logger.LarkspurWindowsCameraHub.Device=INFO, DEVICE\n"), 1U);
    EXPECT_EQ(count(text, "\n\n# SomeOtherApp Logger\nlog4j.logger.SomeOtherApp=INFO, PRODUCT\n\n####"), 1U);
    EXPECT_EQ(count(text, "${SOMEOTHERAPP_LOG_DIR}/"), 4U);
}

TEST(LoggingPropertiesTest, AnApplicationMayHaveTheNameOfAFixedLine) {
    const std::string text = propertiesOf("DeviceManager");
    EXPECT_EQ(count(text, "log4j.logger.DeviceManager=INFO, DEVICE\n"), 1U);
    EXPECT_EQ(count(text, "# DeviceManager Logger\nlog4j.logger.DeviceManager=INFO, PRODUCT\n"), 1U);
}

} // namespace
