#pragma once

#include <log4cxx/level.h>
#include <log4cxx/logger.h>

#include <string>

/// The application's identity: its name, and the version that "camera:version" answers. Any thread.
const std::string& applicationName();
const std::string& applicationVersion();

/// The hub's loggers. Any thread.
log4cxx::LoggerPtr serviceLogger();
log4cxx::LoggerPtr deviceLogger();
log4cxx::LoggerPtr communicationLogger();

// The one diagnostics object of the process. Lines that are logged while the object is replaced reach the old log files
// or the new ones. All text is UTF-8. Main thread.

/// Replaces the object by one for an ordinary run, with a new run folder, and arms crash recording. False on failure;
/// there may be an object all the same if crash recording alone failed. Throws if the Crash folder can't be made.
bool initializeDiagnosticsAndLogging(const std::string& appName, const std::string& version);

/// The same, below a folder of somebody's choice, which must hold the run's folders already. A failure leaves no
/// usable object: the caller makes an ordinary one.
bool initializeRedirectedDiagnosticsAndLogging(const std::string& appName, const std::string& version,
                                               const std::string& folder);

/// Arms crash recording; with a debugger attached, sends the hub's log to the console instead. Needs the object.
bool initializeCrashRecordingAndConsoleLogging();

/// The folder of the current run; empty if there is no object. Throws a HaldenException if the folder has gone.
std::string getDiagnosticsFolderUtf8();

/// Destroys the object; crash recording ends, the log goes on.
void shutdownDiagnosticsAndLogging();

/// Adds the console to what the logger writes to, and sets its level. Each call adds once more.
void setConsoleLogging(log4cxx::LoggerPtr logger, const log4cxx::LevelPtr& level);

/// The same for the service and the device logger.
void setConsoleLevel(const log4cxx::LevelPtr& level);
