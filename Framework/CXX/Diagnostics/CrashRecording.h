#pragma once

#include "Framework/CXX/Diagnostics/DiagnosticsFolders.h"
#include "Framework/CXX/Diagnostics/IFileSystem.h"
#include "Framework/CXX/System/CrashReporter/DescribeException.h"

#include <string>

/// Lets a crash leave a record in the run's Crash folder, from install until uninstall or the end of the object.
/// One thread at a time.
class CrashRecording {
public:
    /// Both have to outlive the object. Once logging is initialised it alone writes the folders' field of the crash
    /// folder.
    CrashRecording(DiagnosticsFolders& folders, const IFileSystem& fileSystem);
    ~CrashRecording();
    CrashRecording(const CrashRecording&) = delete;
    CrashRecording& operator=(const CrashRecording&) = delete;

    /// For the exceptions that nothing catches, from the next install on.
    void describeExceptionsWith(Halden::System::DescribeException describe);

    /// False if that can't be had, or is so already. Throws the file system's errors.
    bool install(const std::u16string& appName, const std::u16string& version, bool silent);
    void uninstall();
    bool isInstalled() const;

private:
    DiagnosticsFolders& _folders;
    const IFileSystem& _fileSystem;
    Halden::System::DescribeException _describeException = nullptr;
};
