#include "Platform/Shared/WakeUp.h"

#include "Platform/Shared/ErrnoError.h"
#include "Tests/Support/RaisedError.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>

#include <cerrno>
#include <thread>

using Platform::Shared::WakeUp;

namespace {

bool isReadable(const WakeUp& wakeUp, int timeoutInMs = 0) {
    pollfd waited{wakeUp.descriptor(), POLLIN, 0};
    return ::poll(&waited, 1, timeoutInMs) == 1;
}

TEST(WakeUpTest, WakesAThreadThatWaits) {
    const WakeUp wakeUp("a test");
    bool woken = false;
    std::thread sleeper([&] { woken = isReadable(wakeUp, 10'000); });
    wakeUp.wake();
    sleeper.join();
    EXPECT_TRUE(woken);
}

TEST(WakeUpTest, LastsUntilItIsDrainedHoweverOftenItWasGiven) {
    const WakeUp wakeUp("a test");
    EXPECT_FALSE(isReadable(wakeUp));
    wakeUp.wake();
    wakeUp.wake();
    EXPECT_TRUE(isReadable(wakeUp));
    EXPECT_TRUE(isReadable(wakeUp));
    wakeUp.drain();
    EXPECT_FALSE(isReadable(wakeUp));
    wakeUp.drain(); // does not block
    wakeUp.wake();
    EXPECT_TRUE(isReadable(wakeUp));
}

TEST(WakeUpTest, NamesTheSleeperWhereTheSystemHasNoDescriptorLeft) {
    const std::string expected = "80004005 eventfd on a test: Too many open files";
    // The sanitizer takes a descriptor to look at the type of an object, but only the first time.
    ASSERT_EQ(raisedBy([] { throw Platform::Shared::errnoError("eventfd", "a test", EMFILE); }), expected);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const rlimit none{0, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
    const std::string error = raisedBy([] { WakeUp("a test"); });
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(error, expected);
}

} // namespace
