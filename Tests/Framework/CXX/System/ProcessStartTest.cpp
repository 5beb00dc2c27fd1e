#include "Framework/CXX/System/ProcessStart.h"

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <initializer_list>
#include <string>

using Halden::System::openMissingStreams;
using Halden::System::surviveFailedWrites;

namespace {

std::filesystem::path fileBehind(int descriptor) {
    std::error_code none;
    return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), none);
}

TEST(ProcessStartTest, StreamsThatAreClosedGoNowhereAndTheOthersStay) {
    for (const std::initializer_list<int> closed : {std::initializer_list<int>{}, {0}, {1}, {0, 2}, {0, 1, 2}}) {
        const int result = runInChild([closed] {
            const std::array<std::filesystem::path, 3> before = {fileBehind(0), fileBehind(1), fileBehind(2)};
            for (const int stream : closed)
                close(stream);
            openMissingStreams();
            for (const int stream : {0, 1, 2}) {
                const bool wasClosed = std::ranges::find(closed, stream) != closed.end();
                EXPECT_EQ(fileBehind(stream), wasClosed ? "/dev/null" : before[static_cast<std::size_t>(stream)]);
                EXPECT_EQ(fcntl(stream, F_GETFD), 0) << "programs that it starts have them too";
            }
        });
        EXPECT_EQ(result, 0);
    }
}

TEST(ProcessStartTest, AWriteThatNobodyReadsFails) {
    const int result = runInChild([] {
        surviveFailedWrites();
        std::array<int, 2> pipe{};
        ASSERT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
        close(pipe[0]);
        EXPECT_EQ(write(pipe[1], "x", 1), -1);
        EXPECT_EQ(errno, EPIPE);
    });
    EXPECT_EQ(result, 0);
}

TEST(ProcessStartTest, AWriteBeyondTheLimitOfAFilesSizeFails) {
    const TemporaryFolder folder;
    const int result = runInChild([&folder] {
        surviveFailedWrites();
        const int file = open((folder.path() / "file").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        const rlimit limit{1, RLIM_INFINITY};
        ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
        EXPECT_EQ(write(file, "xx", 2), 1);
        EXPECT_EQ(write(file, "x", 1), -1);
        EXPECT_EQ(errno, EFBIG);
        close(file);
    });
    EXPECT_EQ(result, 0);
}

} // namespace
