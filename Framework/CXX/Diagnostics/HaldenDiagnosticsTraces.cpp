#include "Framework/CXX/Common/RunCatch.h"
#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/HaldenDiagnostics.h"
#include "Framework/CXX/Diagnostics/PathText.h"

#include <array>
#include <ctime>

namespace {

constexpr char16_t dataFolderName[] = u"Data";

std::string currentLocalTime() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    std::array<char, 100> text{};
    std::strftime(text.data(), text.size(), "_%F_%T%z", &local);
    return text.data();
}

// Characters that not every file system takes in a name.
std::string asFolderName(std::string name) {
    for (char& letter : name)
        if (letter == '*' || letter == ':')
            letter = '-';
    return name;
}

} // namespace

std::string formatTraceId(const std::string& id) { return "TraceId: " + id; }

std::string HaldenDiagnostics::createTrace(const std::string& name) {
    const std::string id = asFolderName(name + currentLocalTime());
    const std::u16string folder = Halden::joinPaths(_folders.tracesFolder, Halden::toUtf16(id));
    _fileSystem->create_directory(folder);
    const std::lock_guard lock(_mutex);
    _fileSystem->create_directory(Halden::joinPaths(folder, dataFolderName));
    return id;
}

void HaldenDiagnostics::createDefaultTrace() {
    _folders.defaultTraceId = createTrace("_default");
    setCurrentTrace(_folders.defaultTraceId);
}

void HaldenDiagnostics::setCurrentTrace(const std::string& traceId) {
    const std::u16string dataFolder = Halden::toUtf16(getDataFolder(traceId).native());
    const std::lock_guard lock(_mutex);
    _folders.currentTraceId = traceId;
    _folders.currentDataFolder = dataFolder;
}

std::filesystem::path HaldenDiagnostics::getDataFolder(const std::string& traceId) {
    std::u16string tracesFolder;
    {
        const std::lock_guard lock(_mutex);
        tracesFolder = _folders.tracesFolder;
    }
    if (!_fileSystem->exists(tracesFolder))
        throw Halden::HaldenException(u"Invalid diagnostics");
    const std::u16string traceFolder = Halden::joinPaths(tracesFolder, Halden::toUtf16(traceId));
    return Halden::toPath(traceFolder) / dataFolderName;
}

std::string HaldenDiagnostics::getDefaultTraceId() { return _folders.defaultTraceId; }

std::string HaldenDiagnostics::getCurrentTraceId() {
    requireValid();
    const std::lock_guard lock(_mutex);
    return _folders.currentTraceId;
}

std::u16string HaldenDiagnostics::getCurrentDataFolder() {
    requireValid();
    const std::lock_guard lock(_mutex);
    return _folders.currentDataFolder;
}

std::u16string HaldenDiagnostics::getTraceFolder(const std::string& traceId) const {
    requireValid();
    return Halden::joinPaths(_folders.tracesFolder, Halden::toUtf16(traceId));
}

std::u16string HaldenDiagnostics::getCurrentTraceFolder() const {
    requireValid();
    const std::lock_guard lock(_mutex);
    return Halden::joinPaths(_folders.tracesFolder, Halden::toUtf16(_folders.currentTraceId));
}

std::u16string HaldenDiagnostics::createCurrentDataSubfolder(const std::u16string& relativePath) {
    const std::lock_guard lock(_mutex);
    std::u16string folder = Halden::joinPaths(_folders.currentDataFolder, relativePath);
    _fileSystem->create_directory(folder);
    return folder;
}

std::u16string HaldenDiagnostics::createTraceSubfolder(const std::string& traceId, const std::u16string& relativePath) {
    const std::lock_guard lock(_mutex);
    const std::u16string traceFolder = Halden::joinPaths(_folders.tracesFolder, Halden::toUtf16(traceId));
    std::u16string folder = Halden::joinPaths(traceFolder, relativePath);
    _fileSystem->create_directory(folder);
    return folder;
}
