#include "Framework/CXX/Diagnostics/DiagnosticsFactories.h"

#include "Framework/CXX/Common/RunCatch.h"
#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/FileSystem.h"

namespace {

using DiagnosticsPtr = std::unique_ptr<HaldenDiagnostics>;

// What goes wrong is dropped: the caller sees whether the object became usable, and reports it.
template <typename Work> void dropErrorsOf(const Work& work) {
    try {
        work();
    } catch (...) {
    }
}

/// The object if the steps have made it usable, whatever became of them; null otherwise.
template <typename Steps>
DiagnosticsPtr create(const std::string& appName, const std::string& version, const std::string& redirectFolder,
                      const IFileSystem* fileSystem, const Steps& steps) {
    DiagnosticsPtr diagnostics;
    dropErrorsOf([&] {
        diagnostics = std::make_unique<HaldenDiagnostics>(Halden::toUtf16(appName), Halden::toUtf16(version),
                                                          Halden::toUtf16(redirectFolder), fileSystem);
        steps(*diagnostics);
    });
    bool valid = false;
    dropErrorsOf([&] { valid = diagnostics && diagnostics->isValid(); });
    if (!valid)
        diagnostics.reset();
    return diagnostics;
}

} // namespace

DiagnosticsPtr createDiagnostics(const std::string& appName, const std::string& version, int keepCount,
                                 const IFileSystem* fileSystem) noexcept {
    return create(appName, version, {}, fileSystem, [&](HaldenDiagnostics& made) {
        made.initializeLogging();
        if (!made.isConfigured())
            throw Halden::HaldenException(u"Need to call initializeLogging() first");
        made.createFolders(defaultFileSystem());
        made.createDefaultTrace();
        made.trimRunFolders(keepCount);
    });
}

DiagnosticsPtr createRedirectedDiagnostics(const std::string& appName, const std::string& version,
                                           const std::string& redirectFolder, const IFileSystem* fileSystem) noexcept {
    return create(appName, version, redirectFolder, fileSystem,
                  [](HaldenDiagnostics& made) { made.initializeLogging(); });
}
