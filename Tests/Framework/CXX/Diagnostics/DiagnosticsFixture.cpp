#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"

#include "Framework/CXX/Diagnostics/DiagnosticsFactories.h"
#include "Framework/CXX/System/FolderWalk.h"

#include <fcntl.h>
#include <log4cxx/logmanager.h>
#include <log4cxx/spi/loggerrepository.h>
#include <sys/stat.h>

#include <clocale>
#include <stdexcept>

namespace {

std::int64_t creationTime(const std::filesystem::path& path) {
    struct statx attributes{};
    if (statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME | STATX_MTIME, &attributes) != 0)
        throw std::runtime_error("no time of " + path.string());
    return Halden::System::creationTimeOf(attributes);
}

} // namespace

DiagnosticsFixture::DiagnosticsFixture() {
    std::setlocale(LC_ALL, "C.UTF-8"); // as the hub does, first of all
    std::filesystem::create_directory(common());
    std::filesystem::create_directory(local());
}

DiagnosticsFixture::~DiagnosticsFixture() { log4cxx::LogManager::resetConfiguration(); }

std::filesystem::path DiagnosticsFixture::localAppFolder() const {
    return local() / "Halden Imaging Group" / (testAppName + " " + testVersion);
}

std::unique_ptr<HaldenDiagnostics> DiagnosticsFixture::makeDiagnostics(int keepCount) {
    return createDiagnostics(testAppName, testVersion, keepCount, nullptr);
}

std::set<std::string> DiagnosticsFixture::runNames() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(allRuns()))
        names.insert(entry.path().filename());
    return names;
}

// The file system's clock goes in steps of some milliseconds.
void DiagnosticsFixture::makeRunFolder(const std::string& name) const {
    const std::filesystem::path folder = allRuns() / name;
    std::filesystem::create_directories(folder / "logs");
    // File systems count time in ticks: whatever is made from now on is to be younger.
    const std::filesystem::path probe = root() / "probe";
    do {
        std::filesystem::remove(probe);
        std::filesystem::create_directory(probe);
    } while (creationTime(probe) <= creationTime(folder));
    std::filesystem::remove(probe);
}

std::filesystem::path DiagnosticsFixture::makeRedirectFolder(const std::string& name) const {
    const std::filesystem::path folder = root() / "client" / "Diagnostics" / name;
    std::filesystem::create_directories(folder / "LarkspurWindowsCameraHub" / "logs");
    std::filesystem::create_directories(folder / "LarkspurWindowsCameraHub" / "Traces");
    return folder;
}

std::set<std::string> DiagnosticsFixture::openFiles() const {
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        const std::string file = std::filesystem::read_symlink(entry.path(), gone);
        if (file.starts_with(root().string()))
            files.insert(file);
    }
    return files;
}
