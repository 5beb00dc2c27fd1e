#pragma once

#include "Framework/CXX/System/CrashReporter/DescribeException.h"

#include <chrono>
#include <filesystem>
#include <string>

/// Leaves one text file in a folder when the process dies of an uncaught exception or a fatal signal,
/// then lets it die as it would have: same signal, same core dump, same text on standard error.
///
/// Two sides share the work. The crashing side runs in the dying thread (a signal handler on an
/// alternate stack, or the terminate handler). It relies on nothing that a crash may have broken: it
/// neither allocates nor takes locks, all its memory is static and all its texts are made at install.
/// It opens the record and writes the first lines: what happened, when, which version. Then it starts
/// the helper, a program of its own, which stops the other threads, reads this process from outside
/// and appends stacks with function names and source lines, registers and modules. The crashing side
/// waits for it with a time limit and kills it if need be, so that a crash never becomes a hang. If
/// the helper fails, the crashing side appends what it can tell by itself: registers, addresses that
/// look like return addresses, the memory map.
///
/// Covered: SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT and std::terminate, in every thread. A stack
/// overflow needs an alternate stack in the thread concerned: the installing thread gets one, and so
/// does every thread that starts in a program that links this library, whoever starts it (see
/// ThreadAlternateStacks.cpp). Not covered: SIGKILL; faults in a thread that blocks the signal of the
/// fault; stack overflow in threads made by a bare clone(); children made by fork() without exec.
namespace Halden::System {

struct CrashReporterInstallRecord {
    std::string applicationName;        ///< UTF-8, at most 200 bytes
    std::string applicationVersion;     ///< UTF-8, at most 200 bytes
    std::filesystem::path reportFolder; ///< must exist; records are named `crash-<local time>-<process id>.txt`
    bool writeCoreFile = false;         ///< the helper also writes an ELF core file beside the record
    DescribeException describeException = nullptr; ///< for exceptions that are neither std::exception, text nor int
    std::filesystem::path helper; ///< the helper program; empty: LarkspurCrashHelper beside the executable
    std::chrono::milliseconds helperTimeLimit{30000}; ///< and, before that, the limit for an exception's text
};

/// False, with nothing changed, if it is installed already, the folder does not exist, a text is too
/// long, or the system refuses. A missing helper is no failure: records are shorter then. There is
/// never a dialog, so nothing here tells silent from not silent. One thread at a time, the two
/// functions below included.
bool installCrashReporter(const CrashReporterInstallRecord& record);

/// Asks for a screenshot of the windows of this process. False if the reporter is not installed. The
/// request is taken, but a console process has no windows, so all that comes of it is a line in the
/// record that says so.
bool addScreenshotToCrashReports();

/// Puts back what stood before: signal dispositions, terminate handler, the calling thread's alternate
/// stack. A handler that somebody set after the install stays. Does nothing if not installed.
void uninstallCrashReporter();

} // namespace Halden::System
