#include "Framework/CXX/System/CrashReporter/CrashSite.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace Halden::System {

namespace {

constinit CrashSite theSite;

} // namespace

CrashSite& crashSite() noexcept { return theSite; }

pid_t threadId() noexcept { return static_cast<pid_t>(syscall(SYS_gettid)); }

} // namespace Halden::System
