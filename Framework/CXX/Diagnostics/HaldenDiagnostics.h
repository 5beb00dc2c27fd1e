#pragma once

#include "Framework/CXX/Diagnostics/CrashRecording.h"
#include "Framework/CXX/Diagnostics/DiagnosticsFolders.h"
#include "Framework/CXX/Diagnostics/IDiagnostics.h"
#include "Framework/CXX/Diagnostics/IFileSystem.h"
#include "Framework/CXX/Diagnostics/Traces.h"

#include <cstdint>
#include <string>

/// Owns everything that a run leaves on disk: its folders, logs, traces and crash records. Made by the factories in
/// DiagnosticsFactories.h. Any thread. Crash recording, and what only the factories call: One thread at a time.
class HaldenDiagnostics : public Halden::IDiagnostics {
public:
    /// Touches nothing on disk. A redirect folder makes the run go there; empty for an ordinary run. A null file
    /// system stands for the default one.
    HaldenDiagnostics(std::u16string appName, std::u16string version, std::u16string redirectFolder,
                      const IFileSystem* fileSystem);

    std::u16string getDiagnosticsFolder() override;
    std::u16string getRunFolder() override;
    std::filesystem::path getDataFolder(const std::string& traceId) override;
    std::u16string getCurrentDataFolder() override;
    std::string getDefaultTraceId() override;
    std::string getCurrentTraceId() override;
    void setCurrentTrace(const std::string& traceId) override;
    std::string createTrace(const std::string& name) override;

    /// Replaces the logging configuration file in that folder. A failure is not reported.
    virtual void writeLoggingProperties(const std::string& text, const std::u16string& folder);

    /// Finds or makes the logging configuration file, decides on the folders, and configures the process's logging; not
    /// for a redirected run whose folders are not there. Throws the file system's errors, and std::out_of_range for an
    /// impossible redirect folder.
    void initializeLogging();

    /// Whether the folders are decided on; they need not be there.
    bool isConfigured() const { return !_folders.baseFolder.empty(); }

    /// Whether the folders are decided on and are all there at this moment.
    bool isValid() const;

    /// Makes the folders that isValid looks for, in that order. Throws the file system's errors.
    void createFolders(const IFileSystem& fileSystem);

    /// Makes the trace of everything that belongs to no other, and makes it the current one.
    void createDefaultTrace();

    /// Removes the oldest run folders, until at most that many are left, and at least one. Throws if not valid.
    void trimRunFolders(int keepCount);

    /// Composes the logging configuration file and hands it to writeLoggingProperties.
    void generateLoggingProperties(const std::string& appName, const std::u16string& folder);

    // Each of these throws if the object is not valid.
    std::u16string getBaseFolder() const;
    std::u16string getRunName() const;
    std::u16string getLogFolder() const;
    std::u16string getTracesFolder() const;
    std::u16string getTraceFolder(const std::string& traceId) const;
    std::u16string getCurrentTraceFolder() const;

    /// Make a folder below the current trace's data, or below a trace, and return it. Throw the file system's errors.
    std::u16string createCurrentDataSubfolder(const std::u16string& relativePath);
    std::u16string createTraceSubfolder(const std::string& traceId, const std::u16string& relativePath);

    /// What gives the text of an uncaught exception to its crash record. To be named before crash recording is
    /// installed.
    void describeUncaughtExceptionsWith(Halden::System::DescribeException describe);

    /// From now on a crash leaves a record in the run's Crash folder. False if that can't be had, or is so already.
    /// Throws the file system's errors.
    bool installCrashRecording(bool silent, std::uint32_t miniDumpType);
    void uninstallCrashRecording();
    bool isCrashRecordingInstalled() const;

private:
    void requireValid() const;
    void fillFolders(const std::u16string& commonFolder);
    std::u16string createCommonFolder(const std::u16string& appFolderName) const;
    void configureLogging(const std::u16string& commonFolder) const;

    const std::int64_t _startTime; // seconds since the epoch
    DiagnosticsFolders _folders;
    const std::u16string _logDirVariable; // the environment variable through which the configuration finds the logs
    const std::u16string _appName;
    const std::u16string _version;
    std::u16string _redirectFolder;
    const IFileSystem& _fileSystem;
    Traces _traces;
    CrashRecording _crashRecording; // ends before all else
};
