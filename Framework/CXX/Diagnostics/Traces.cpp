#include "Framework/CXX/Diagnostics/Traces.h"

#include "Framework/CXX/Common/RunCatch.h"
#include "Framework/CXX/Common/TextConversion.h"
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

Traces::Traces(DiagnosticsFolders& folders, const IFileSystem& fileSystem)
    : _folders(folders), _fileSystem(fileSystem) {}

std::string Traces::create(const std::string& name) {
    const std::string id = asFolderName(name + currentLocalTime());
    const std::u16string made = folder(id);
    _fileSystem.create_directory(made);
    const std::lock_guard lock(_mutex);
    _fileSystem.create_directory(Halden::joinPaths(made, dataFolderName));
    return id;
}

void Traces::createDefault() {
    _folders.defaultTraceId = create("_default");
    setCurrent(_folders.defaultTraceId);
}

void Traces::setCurrent(const std::string& id) {
    const std::u16string data = Halden::toUtf16(dataFolder(id).native());
    const std::lock_guard lock(_mutex);
    _folders.currentTraceId = id;
    _folders.currentDataFolder = data;
}

std::string Traces::defaultId() const { return _folders.defaultTraceId; }

std::string Traces::currentId() const {
    const std::lock_guard lock(_mutex);
    return _folders.currentTraceId;
}

std::u16string Traces::currentDataFolder() const {
    const std::lock_guard lock(_mutex);
    return _folders.currentDataFolder;
}

std::u16string Traces::currentFolder() const {
    const std::lock_guard lock(_mutex);
    return folder(_folders.currentTraceId);
}

std::u16string Traces::folder(const std::string& id) const {
    return Halden::joinPaths(_folders.tracesFolder, Halden::toUtf16(id));
}

std::filesystem::path Traces::dataFolder(const std::string& id) const {
    std::u16string tracesFolder;
    {
        const std::lock_guard lock(_mutex);
        tracesFolder = _folders.tracesFolder;
    }
    if (!_fileSystem.exists(tracesFolder))
        throw Halden::HaldenException(u"Invalid diagnostics");
    return Halden::toPath(tracesFolder) / Halden::toPath(Halden::toUtf16(id)) / dataFolderName;
}

std::u16string Traces::createCurrentDataSubfolder(const std::u16string& relativePath) {
    const std::lock_guard lock(_mutex);
    std::u16string made = Halden::joinPaths(_folders.currentDataFolder, relativePath);
    _fileSystem.create_directory(made);
    return made;
}

std::u16string Traces::createSubfolder(const std::string& id, const std::u16string& relativePath) {
    const std::lock_guard lock(_mutex);
    std::u16string made = Halden::joinPaths(folder(id), relativePath);
    _fileSystem.create_directory(made);
    return made;
}

std::string formatTraceId(const std::string& id) { return "TraceId: " + id; }
