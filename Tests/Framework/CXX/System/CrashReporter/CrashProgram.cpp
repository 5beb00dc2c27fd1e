// A program that crashes on request: CrashProgram <cause> <main|thread|loop> [name=value...], where the
// names are those of the install record's members, or "install=no", "screenshot=yes", "user=<number>",
// "earlierHandler=<exit status>", "largestFile=<bytes>".

#include "Framework/CXX/System/CrashReporter/CrashReporter.h"
#include "Tests/Framework/CXX/System/CrashReporter/CrashCauses.h"
#include "Tests/Framework/CXX/System/CrashReporter/OwnException.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace {

using Options = std::map<std::string, std::string>;

Options readOptions(int argc, char* argv[]) {
    Options options;
    for (int i = 3; i < argc; ++i) {
        const std::string argument = argv[i];
        const std::size_t sign = argument.find('=');
        options[argument.substr(0, sign)] = argument.substr(sign + 1);
    }
    return options;
}

bool install(const Options& options) {
    Halden::System::CrashReporterInstallRecord record;
    record.applicationName = "Crash Program \u00e9";
    record.applicationVersion = "7.3";
    record.reportFolder = options.at("reportFolder");
    record.describeException = CrashTest::describeOwnException;
    record.writeCoreFile = options.contains("writeCoreFile");
    if (options.contains("helper"))
        record.helper = options.at("helper");
    if (options.contains("helperTimeLimit"))
        record.helperTimeLimit = std::chrono::milliseconds(std::stol(options.at("helperTimeLimit")));
    return Halden::System::installCrashReporter(record);
}

/// An ordinary user's process into which nobody may look, as a program with file capabilities is.
void becomeUnreadable(uid_t user) {
    if (setgid(user) != 0 || setuid(user) != 0)
        std::abort();
    prctl(PR_SET_DUMPABLE, 0);
}

int earlierHandlersStatus = 0;

/// What somebody had set up for SIGSEGV before the install: expects to find the very fault.
void setEarlierHandler(int status) {
    earlierHandlersStatus = status;
    struct sigaction action{};
    action.sa_flags = SA_SIGINFO;
    action.sa_sigaction = [](int, siginfo_t* info, void*) {
        _exit(info->si_code == SEGV_MAPERR && info->si_addr == nullptr ? earlierHandlersStatus : 99);
    };
    sigaction(SIGSEGV, &action, nullptr);
}

} // namespace

int main(int argc, char* argv[]) {
    if (argc < 3)
        return 2;
    const CrashTest::Cause cause = CrashTest::causes().at(argv[1]);
    const std::string place = argv[2];
    const Options options = readOptions(argc, argv);
    if (options.contains("user"))
        becomeUnreadable(static_cast<uid_t>(std::stoul(options.at("user"))));
    if (options.contains("largestFile")) {
        const rlim_t bytes = std::stoul(options.at("largestFile"));
        const rlimit limit{bytes, bytes};
        setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
    }
    if (options.contains("earlierHandler"))
        setEarlierHandler(std::stoi(options.at("earlierHandler")));
    if (!options.contains("install") && !install(options))
        return 3;
    if (options.contains("screenshot"))
        Halden::System::addScreenshotToCrashReports();
    std::puts("ready");
    std::fflush(stdout);
    if (place == "thread")
        CrashTest::runInThread(cause);
    else if (place == "loop")
        CrashTest::runInEventLoop(cause);
    else
        cause();
    return 0;
}
