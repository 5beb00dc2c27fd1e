#include "Framework/CXX/System/CrashReporter/CrashRecord.h"

#include "Framework/CXX/System/CrashReporter/HelperProcess.h"
#include "Framework/CXX/System/CrashReporter/ShortRecord.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cstdlib>

namespace Halden::System {

namespace {

/// Without an extension.
const PathText& recordName(const CrashSite& site, const LocalTime& time) noexcept {
    static PathText name;
    name = site.reportFolder;
    name.text("/crash-").decimal(time.year, 4).text("-").decimal(time.month, 2).text("-").decimal(time.day, 2);
    name.text("_").decimal(time.hour, 2).text("-").decimal(time.minute, 2).text("-").decimal(time.second, 2);
    return name.text("-").decimal(getpid());
}

/// Never one of the three standard descriptors, which the helper's own need; -1 on failure.
int openRecord(const PathText& path) noexcept {
    constexpr int firstFree = 3;
    const int opened = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_CLOEXEC, 0644);
    if (opened < 0 || opened >= firstFree)
        return opened;
    const int moved = fcntl(opened, F_DUPFD_CLOEXEC, firstFree);
    close(opened);
    return moved;
}

void writeFirstLines(int file, const CrashSite& site, const CrashReason& reason, const LocalTime& time) noexcept {
    constexpr int longestThreadName = 16; // fixed by the kernel
    char threadName[longestThreadName + 1] = {};
    prctl(PR_GET_NAME, threadName);
    const long zone = std::labs(time.offsetInSeconds) / 60;

    static RawText<3UL * PATH_MAX> lines; // an alternate stack is small
    lines.clear();
    lines.text("What happened:  ").text(describeReason(reason).view());
    lines.text("\nWhen:           ").decimal(time.year, 4).text("-").decimal(time.month, 2).text("-");
    lines.decimal(time.day, 2).text(" ").decimal(time.hour, 2).text(":").decimal(time.minute, 2).text(":");
    lines.decimal(time.second, 2).text(time.offsetInSeconds < 0 ? " -" : " +").decimal(zone / 60, 2).text(":");
    lines.decimal(zone % 60, 2).text(" (local time)");
    lines.text("\nApplication:    ").text(site.applicationName.view());
    lines.text("\nVersion:        ").text(site.applicationVersion.view());
    lines.text("\nProcess:        ").decimal(getpid()).text(" ").text(site.executable.view());
    lines.text("\nThread:         ").decimal(threadId()).text(" \"").text(threadName).text("\"\n");
    if (site.screenshotAsked)
        lines.text("Screenshot:     none; this process has no windows\n");
    writeAll(file, lines.view());
}

void writeRest(int file, const CrashSite& site, const CrashReason& reason, const PathText& name) noexcept {
    static PathText coreFile;
    coreFile.clear();
    if (site.writeCoreFile)
        coreFile.text(name.view()).text(".core");
    const HelperResult result = runHelper(site, file, coreFile, reason);
    if (result != HelperResult::Finished)
        writeShortRecord(file, result, *reason.context);
}

} // namespace

void recordCrash(const CrashSite& site, const CrashReason& reason) noexcept {
    const LocalTime time = site.utcOffsets.localTime(reason.time.tv_sec);
    const PathText& name = recordName(site, time);
    static PathText path;
    path = name;
    const int file = openRecord(path.text(".txt"));
    if (file >= 0) {
        writeFirstLines(file, site, reason, time);
        writeRest(file, site, reason, name);
        close(file);
    }
}

} // namespace Halden::System
