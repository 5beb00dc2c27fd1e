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

DiagnosticsPtr make(const std::string& appName, const std::string& version, const std::string& redirectFolder,
                    const IFileSystem* fileSystem) {
    return std::make_unique<HaldenDiagnostics>(Halden::toUtf16(appName), Halden::toUtf16(version),
                                               Halden::toUtf16(redirectFolder), fileSystem);
}

void dropUnlessValid(DiagnosticsPtr& diagnostics) {
    bool valid = false;
    dropErrorsOf([&] { valid = diagnostics && diagnostics->isValid(); });
    if (!valid)
        diagnostics.reset();
}

} // namespace

DiagnosticsPtr createDiagnostics(const std::string& appName, const std::string& version, int keepCount,
                                 const IFileSystem* fileSystem) noexcept {
    DiagnosticsPtr diagnostics;
    dropErrorsOf([&] {
        diagnostics = make(appName, version, "", fileSystem);
        diagnostics->initializeLogging();
        if (!diagnostics->isConfigured())
            throw Halden::HaldenException(u"Need to call initializeLogging() first");
        diagnostics->createFolders(defaultFileSystem());
        diagnostics->createDefaultTrace();
        diagnostics->trimRunFolders(keepCount);
    });
    dropUnlessValid(diagnostics);
    return diagnostics;
}

DiagnosticsPtr createRedirectedDiagnostics(const std::string& appName, const std::string& version,
                                           const std::string& redirectFolder, const IFileSystem* fileSystem) noexcept {
    DiagnosticsPtr diagnostics;
    dropErrorsOf([&] {
        diagnostics = make(appName, version, redirectFolder, fileSystem);
        diagnostics->initializeLogging();
    });
    dropUnlessValid(diagnostics);
    return diagnostics;
}
