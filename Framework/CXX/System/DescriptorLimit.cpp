#include "Framework/CXX/System/DescriptorLimit.h"

#include <sys/resource.h>

namespace Halden::System {

void useAllDescriptors() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace Halden::System
