#include "Framework/CXX/System/CrashReporter/CrashReporter.h"

#include "Framework/CXX/System/CrashReporter/CrashHandlers.h"
#include "Framework/CXX/System/CrashReporter/CrashSite.h"
#include "Framework/CXX/System/CrashReporter/ThreadAlternateStacks.h"

#include <unistd.h>

#include <system_error>

namespace Halden::System {

namespace {

constexpr std::size_t longestIdentity = 200;
constexpr std::size_t longestFolder = PATH_MAX - 100; // leaves room for a record's name

template <std::size_t Capacity> void assign(RawText<Capacity>& target, const std::string& value) noexcept {
    target.clear();
    target.text(value);
}

/// False if a text does not fit. Changes nothing that a reporter at work relies on: none is.
bool fill(CrashSite& site, const CrashReporterInstallRecord& record) {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::absolute(record.reportFolder, error);
    const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
    const std::filesystem::path helper =
        record.helper.empty() ? executable.parent_path() / "LarkspurCrashHelper" : record.helper;
    if (record.applicationName.size() > longestIdentity || record.applicationVersion.size() > longestIdentity ||
        folder.native().size() > longestFolder || helper.native().size() > longestFolder ||
        !std::filesystem::is_directory(folder, error)) {
        return false;
    }
    assign(site.applicationName, record.applicationName);
    assign(site.applicationVersion, record.applicationVersion);
    assign(site.reportFolder, folder.native());
    assign(site.executable, executable.native());
    assign(site.helper, helper.native());
    site.writeCoreFile = record.writeCoreFile;
    site.screenshotAsked = false;
    site.helperTimeLimitInMs = record.helperTimeLimit.count();
    site.describeException = record.describeException;
    site.utcOffsets.learn(std::time(nullptr));
    site.process = getpid();
    site.exception = {};
    return true;
}

} // namespace

bool installCrashReporter(const CrashReporterInstallRecord& record) {
    CrashSite& site = crashSite();
    if (site.installed || site.stage != CrashStage::None || !fill(site, record))
        return false;
    keepAlternateStack();
    if (!takeSignals(site)) {
        dropAlternateStack();
        return false;
    }
    site.reserved.take();
    site.previousTerminate = std::set_terminate(onTerminate);
    site.installed = true;
    return true;
}

bool addScreenshotToCrashReports() {
    CrashSite& site = crashSite();
    if (site.installed)
        site.screenshotAsked = true;
    return site.installed;
}

void uninstallCrashReporter() {
    CrashSite& site = crashSite();
    if (!site.installed)
        return;
    restorePreviousActions(site);
    if (std::get_terminate() == onTerminate)
        std::set_terminate(site.previousTerminate);
    site.installed = false;
    dropAlternateStack();
    site.reserved.release();
    if (site.stage == CrashStage::Recorded) { // and a handler from before the install saved the process
        site.stage = CrashStage::None;
        site.crashingThread = 0;
    }
}

} // namespace Halden::System
