#include "Framework/CXX/Diagnostics/CrashRecording.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/PathText.h"
#include "Framework/CXX/System/CrashReporter/CrashReporter.h"

CrashRecording::CrashRecording(DiagnosticsFolders& folders, const IFileSystem& fileSystem)
    : _folders(folders), _fileSystem(fileSystem) {}

CrashRecording::~CrashRecording() { uninstall(); }

void CrashRecording::describeExceptionsWith(Halden::System::DescribeException describe) {
    _describeException = describe;
}

bool CrashRecording::install(const std::u16string& appName, const std::u16string& version, bool silent) {
    if (isInstalled())
        return false;
    const std::u16string crashFolder = Halden::joinPaths(_folders.runFolder, u"Crash");
    _fileSystem.create_directory(crashFolder);
    if (!Halden::isFolder(crashFolder))
        return false;
    Halden::System::CrashReporterInstallRecord record;
    record.applicationName = Halden::toUtf8(appName);
    record.applicationVersion = Halden::toUtf8(version);
    record.reportFolder = Halden::toPath(crashFolder);
    record.describeException = _describeException;
    if (!Halden::System::installCrashReporter(record))
        return false;
    if (!silent && !Halden::System::addScreenshotToCrashReports())
        return false;
    _folders.crashFolder = crashFolder;
    return true;
}

void CrashRecording::uninstall() {
    if (isInstalled())
        Halden::System::uninstallCrashReporter();
    _folders.crashFolder.clear();
}

bool CrashRecording::isInstalled() const { return !_folders.crashFolder.empty(); }
