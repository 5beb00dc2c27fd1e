#include "Framework/CXX/System/DescriptorLimit.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

TEST(DescriptorLimitTest, AllThatTheSystemGrantsAreUsed) {
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit fewer{before.rlim_max - 1, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &fewer), 0);
    Halden::System::useAllDescriptors();
    rlimit after{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &after), 0);
    EXPECT_EQ(after.rlim_cur, before.rlim_max);
    EXPECT_EQ(after.rlim_max, before.rlim_max);
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
}

} // namespace
