#include "Framework/CXX/Diagnostics/HaldenDiagnostics.h"

#include "Framework/CXX/Common/RunCatch.h"
#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/FileSystem.h"
#include "Framework/CXX/Diagnostics/LogDestination.h"
#include "Framework/CXX/Diagnostics/LoggingConfiguration.h"
#include "Framework/CXX/Diagnostics/LoggingProperties.h"
#include "Framework/CXX/Diagnostics/PathText.h"
#include "Framework/CXX/Diagnostics/RunFolderEntry.h"
#include "Framework/CXX/Diagnostics/RunFolderTrimming.h"
#include "Framework/CXX/System/DataFolders.h"

#include <cstdlib>
#include <ctime>
#include <fstream>
#include <utility>

namespace {

constexpr char16_t makerFolderName[] = u"Halden Imaging Group";
constexpr char16_t propertiesFileName[] = u"logging.properties";

std::u16string logDirVariableOf(const std::u16string& appName) {
    std::u16string name = Halden::withoutBlanks(appName);
    for (char16_t& letter : name)
        if (letter >= u'a' && letter <= u'z')
            letter = static_cast<char16_t>(letter - u'a' + u'A');
    return name + u"_LOG_DIR";
}

bool holdsProperties(const std::u16string& folder) {
    return Halden::pathExists(folder) && Halden::pathExists(Halden::joinPaths(folder, propertiesFileName));
}

} // namespace

HaldenDiagnostics::HaldenDiagnostics(std::u16string appName, std::u16string version, std::u16string redirectFolder,
                                     const IFileSystem* fileSystem)
    : _startTime(std::time(nullptr)), _logDirVariable(logDirVariableOf(appName)), _appName(std::move(appName)),
      _version(std::move(version)), _redirectFolder(std::move(redirectFolder)),
      _fileSystem(fileSystem != nullptr ? *fileSystem : defaultFileSystem()), _traces(_folders, _fileSystem),
      _crashRecording(_folders, _fileSystem) {}

void HaldenDiagnostics::initializeLogging() {
    const std::u16string appFolderName = _version.empty() ? _appName : _appName + u" " + _version;
    const std::u16string commonFolder = createCommonFolder(appFolderName);
    if (!_redirectFolder.empty()) {
        if (!Halden::isFolder(_redirectFolder))
            return;
        _redirectFolder += u"/" + Halden::withoutBlanks(_appName);
    }
    if (holdsProperties(commonFolder)) {
        fillFolders(commonFolder);
    } else {
        // This place only decides that a configuration exists: the run goes below the common folder all the same.
        const std::u16string local =
            Halden::joinPaths(Halden::toUtf16(Halden::System::localDataFolder()), makerFolderName);
        if (holdsProperties(Halden::joinPaths(local, appFolderName)))
            fillFolders(commonFolder);
    }
    if (!isConfigured()) {
        generateLoggingProperties(Halden::toUtf8(_appName), commonFolder);
        if (holdsProperties(commonFolder))
            fillFolders(commonFolder);
    }
    configureLogging(commonFolder);
}

std::u16string HaldenDiagnostics::createCommonFolder(const std::u16string& appFolderName) const {
    const std::u16string maker =
        Halden::joinPaths(Halden::toUtf16(Halden::System::commonDataFolder()), makerFolderName);
    _fileSystem.create_directory(maker);
    std::u16string folder = Halden::joinPaths(maker, appFolderName);
    _fileSystem.create_directory(folder);
    return folder;
}

void HaldenDiagnostics::fillFolders(const std::u16string& commonFolder) {
    if (!_redirectFolder.empty()) {
        _folders = DiagnosticsFolders::ofRunFolder(_redirectFolder);
        return;
    }
    const std::u16string all = Halden::joinPaths(commonFolder, diagnosticsFolderName);
    _folders = DiagnosticsFolders::ofRunFolder(Halden::joinPaths(all, RunFolderEntry::ofStartTime(_startTime).name));
}

void HaldenDiagnostics::configureLogging(const std::u16string& commonFolder) const {
    // The configuration names the log folder through this variable, so that one file serves every run. Other threads
    // may read the environment meanwhile: the first call comes before they exist, later ones only exchange the value.
    setenv(Halden::toUtf8(_logDirVariable).c_str(), Halden::toUtf8(_folders.logFolder).c_str(), 1);
    // Whoever opens a log file makes the folders above it; those of a client are for the client to make.
    if (!_redirectFolder.empty() && !isValid())
        return;
    const std::u16string propertiesFile = Halden::joinPaths(commonFolder, propertiesFileName);
    if (Halden::pathExists(propertiesFile))
        Halden::configureLogging(Halden::toUtf8(propertiesFile));
    else
        Halden::configureBasicLogging();
}

void HaldenDiagnostics::generateLoggingProperties(const std::string& appName, const std::u16string& folder) {
    writeLoggingProperties(loggingPropertiesOf(appName, Halden::toUtf8(_logDirVariable)), folder);
}

void HaldenDiagnostics::writeLoggingProperties(const std::string& text, const std::u16string& folder) {
    const std::filesystem::path path = Halden::toPath(folder) / propertiesFileName;
    if (!Halden::mayBeLogFile(path)) // a pipe would be waited for
        return;
    std::ofstream file(path, std::ios::trunc);
    if (file)
        file << text;
    file.flush();
    file.close();
}

bool HaldenDiagnostics::isValid() const {
    return isConfigured() && _fileSystem.exists(_folders.diagnosticsFolder) && _fileSystem.exists(_folders.runFolder) &&
           _fileSystem.exists(_folders.logFolder) && _fileSystem.exists(_folders.tracesFolder);
}

void HaldenDiagnostics::requireValid() const {
    if (!isValid())
        throw Halden::HaldenException(u"Invalid diagnostics");
}

void HaldenDiagnostics::createFolders(const IFileSystem& fileSystem) {
    fileSystem.create_directory(_folders.diagnosticsFolder);
    fileSystem.create_directory(_folders.runFolder);
    fileSystem.create_directory(_folders.logFolder);
    fileSystem.create_directory(_folders.tracesFolder);
}

std::u16string HaldenDiagnostics::getDiagnosticsFolder() {
    requireValid();
    return _folders.diagnosticsFolder;
}

std::u16string HaldenDiagnostics::getRunFolder() {
    requireValid();
    return _folders.runFolder;
}

std::u16string HaldenDiagnostics::getBaseFolder() const {
    requireValid();
    return _folders.baseFolder;
}

std::u16string HaldenDiagnostics::getRunName() const {
    requireValid();
    return _folders.runName;
}

std::u16string HaldenDiagnostics::getLogFolder() const {
    requireValid();
    return _folders.logFolder;
}

std::u16string HaldenDiagnostics::getTracesFolder() const {
    requireValid();
    return _folders.tracesFolder;
}

void HaldenDiagnostics::trimRunFolders(int keepCount) {
    requireValid();
    Halden::trimRunFolders(_folders.baseFolder, keepCount);
}

std::filesystem::path HaldenDiagnostics::getDataFolder(const std::string& traceId) {
    return _traces.dataFolder(traceId);
}

std::u16string HaldenDiagnostics::getCurrentDataFolder() {
    requireValid();
    return _traces.currentDataFolder();
}

std::string HaldenDiagnostics::getDefaultTraceId() { return _traces.defaultId(); }

std::string HaldenDiagnostics::getCurrentTraceId() {
    requireValid();
    return _traces.currentId();
}

void HaldenDiagnostics::setCurrentTrace(const std::string& traceId) { _traces.setCurrent(traceId); }

std::string HaldenDiagnostics::createTrace(const std::string& name) { return _traces.create(name); }

void HaldenDiagnostics::createDefaultTrace() { _traces.createDefault(); }

std::u16string HaldenDiagnostics::getTraceFolder(const std::string& traceId) const {
    requireValid();
    return _traces.folder(traceId);
}

std::u16string HaldenDiagnostics::getCurrentTraceFolder() const {
    requireValid();
    return _traces.currentFolder();
}

std::u16string HaldenDiagnostics::createCurrentDataSubfolder(const std::u16string& relativePath) {
    return _traces.createCurrentDataSubfolder(relativePath);
}

std::u16string HaldenDiagnostics::createTraceSubfolder(const std::string& traceId, const std::u16string& relativePath) {
    return _traces.createSubfolder(traceId, relativePath);
}

void HaldenDiagnostics::describeUncaughtExceptionsWith(Halden::System::DescribeException describe) {
    _crashRecording.describeExceptionsWith(describe);
}

bool HaldenDiagnostics::installCrashRecording(bool silent, std::uint32_t /* miniDumpType */) {
    return _crashRecording.install(_appName, _version, silent);
}

void HaldenDiagnostics::uninstallCrashRecording() { _crashRecording.uninstall(); }

bool HaldenDiagnostics::isCrashRecordingInstalled() const { return _crashRecording.isInstalled(); }
