#include "Framework/CXX/Diagnostics/DiagnosticsFactories.h"

#include "Framework/CXX/Common/RunCatch.h"
#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/FileSystem.h"

#include <utility>

namespace {

bool isValidWithoutThrowing(const HaldenDiagnostics& diagnostics) {
    try {
        return diagnostics.isValid();
    } catch (...) {
        return false;
    }
}

// What goes wrong is dropped: the caller sees whether the object became usable, and reports it.
template <typename Steps>
std::unique_ptr<HaldenDiagnostics> runSteps(std::unique_ptr<HaldenDiagnostics> diagnostics, const Steps& steps) {
    try {
        steps(*diagnostics);
    } catch (...) {
    }
    return isValidWithoutThrowing(*diagnostics) ? std::move(diagnostics) : nullptr;
}

} // namespace

std::unique_ptr<HaldenDiagnostics> createDiagnostics(const std::string& appName, const std::string& version,
                                                     int keepCount, const IFileSystem* fileSystem) noexcept {
    auto diagnostics = std::make_unique<HaldenDiagnostics>(Halden::toUtf16(appName), Halden::toUtf16(version),
                                                           std::u16string(), fileSystem);
    return runSteps(std::move(diagnostics), [&](HaldenDiagnostics& made) {
        made.initializeLogging();
        if (!made.isConfigured())
            throw Halden::HaldenException(u"Need to call initializeLogging() first");
        made.createFolders(defaultFileSystem());
        made.createDefaultTrace();
        made.trimRunFolders(keepCount);
    });
}

std::unique_ptr<HaldenDiagnostics> createRedirectedDiagnostics(const std::string& appName, const std::string& version,
                                                               const std::string& redirectFolder,
                                                               const IFileSystem* fileSystem) noexcept {
    auto diagnostics = std::make_unique<HaldenDiagnostics>(Halden::toUtf16(appName), Halden::toUtf16(version),
                                                           Halden::toUtf16(redirectFolder), fileSystem);
    return runSteps(std::move(diagnostics), [](HaldenDiagnostics& made) { made.initializeLogging(); });
}
