#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/HaldenDiagnostics.h"
#include "Framework/CXX/Diagnostics/PathText.h"
#include "Framework/CXX/System/CrashReporter/CrashReporter.h"

void HaldenDiagnostics::describeUncaughtExceptionsWith(DescribeException describe) { _describeException = describe; }

bool HaldenDiagnostics::installCrashRecording(bool silent, std::uint32_t /* miniDumpType */) {
    if (isCrashRecordingInstalled())
        return false;
    const std::u16string crashFolder = Halden::joinPaths(_folders.runFolder, u"Crash");
    _fileSystem->create_directory(crashFolder);
    if (!Halden::isFolder(crashFolder))
        return false;
    Halden::System::CrashReporterInstallRecord record;
    record.applicationName = Halden::toUtf8(_appName);
    record.applicationVersion = Halden::toUtf8(_version);
    record.reportFolder = Halden::toUtf8(crashFolder);
    record.describeException = _describeException;
    if (!Halden::System::installCrashReporter(record))
        return false;
    if (!silent && !Halden::System::addScreenshotToCrashReports())
        return false;
    _folders.crashFolder = crashFolder;
    return true;
}

void HaldenDiagnostics::uninstallCrashRecording() {
    if (isCrashRecordingInstalled())
        Halden::System::uninstallCrashReporter();
    _folders.crashFolder.clear();
}

bool HaldenDiagnostics::isCrashRecordingInstalled() const { return !_folders.crashFolder.empty(); }
