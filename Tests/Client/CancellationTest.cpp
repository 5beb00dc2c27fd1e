#include <CameraHubClient/Cancellation.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <limits>
#include <system_error>

using CameraHub::Cancellation;

namespace {

bool isReadable(int descriptor) {
    pollfd entry{descriptor, POLLIN, 0};
    return poll(&entry, 1, 0) == 1;
}

TEST(CancellationTest, BeginsUncancelledAndStaysCancelled) {
    const Cancellation cancellation;
    EXPECT_FALSE(cancellation.isCancelled());
    EXPECT_FALSE(isReadable(cancellation.descriptor()));
    for (int i = 0; i < 3; ++i) {
        cancellation.cancel();
        EXPECT_TRUE(cancellation.isCancelled());
        EXPECT_TRUE(isReadable(cancellation.descriptor()));
    }
}

TEST(CancellationTest, CopiesBelongTogetherAndOthersDoNot) {
    const Cancellation first;
    Cancellation copy;
    copy = first;
    const Cancellation other;
    copy.cancel();
    EXPECT_TRUE(first.isCancelled());
    EXPECT_FALSE(other.isCancelled());
}

const Cancellation* cancelledBySignal = nullptr;

TEST(CancellationTest, ASignalHandlerMayCancelAndLeavesErrnoAlone) {
    const Cancellation cancellation;
    cancelledBySignal = &cancellation;
    const std::uint64_t full = std::numeric_limits<std::uint64_t>::max() - 1; // so that cancelling meets an error
    ASSERT_EQ(write(cancellation.descriptor(), &full, sizeof full), static_cast<ssize_t>(sizeof full));
    const auto before = std::signal(SIGUSR2, [](int) { cancelledBySignal->cancel(); });
    errno = EDOM;
    std::raise(SIGUSR2);
    EXPECT_EQ(errno, EDOM);
    EXPECT_TRUE(cancellation.isCancelled());
    std::signal(SIGUSR2, before);
}

TEST(CancellationTest, AProcessWithoutDescriptorsLeftHasNone) {
    // A sanitizer takes a descriptor to look at the type of an object, but only the first time.
    ASSERT_FALSE(Cancellation().isCancelled());
    ASSERT_THROW(throw std::system_error(EMFILE, std::generic_category(), "seen"), std::system_error);
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    EXPECT_THROW(Cancellation(), std::system_error);
    setrlimit(RLIMIT_NOFILE, &before);
}

} // namespace
