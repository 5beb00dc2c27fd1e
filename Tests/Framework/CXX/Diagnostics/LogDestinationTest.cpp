#include "Framework/CXX/Diagnostics/LogDestination.h"

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

using Halden::mayBeLogFile;

namespace {

TEST(LogDestinationTest, ARegularFileIsOneAndSoIsWhatIsNotThere) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "file";
    EXPECT_TRUE(mayBeLogFile(file));
    writeFile(file, "");
    EXPECT_TRUE(mayBeLogFile(file));
    std::filesystem::create_symlink(file, folder.path() / "link");
    EXPECT_TRUE(mayBeLogFile(folder.path() / "link"));
}

TEST(LogDestinationTest, ADeviceThatNeverWaitsIsOne) {
    EXPECT_TRUE(mayBeLogFile("/dev/null"));
    EXPECT_TRUE(mayBeLogFile("/dev/full"));
    EXPECT_FALSE(mayBeLogFile("/dev/ptmx"));
}

TEST(LogDestinationTest, APipeIsNoneEvenIfSomebodyReadsIt) {
    const TemporaryFolder folder;
    const std::filesystem::path pipe = folder.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(mayBeLogFile(pipe));
    const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    EXPECT_FALSE(mayBeLogFile(pipe));
    close(reader);
}

TEST(LogDestinationTest, APipeThatIsAStandardStreamIsOneWhileSomebodyReadsIt) {
    const TemporaryFolder folder;
    const std::filesystem::path pipe = folder.path() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
        const std::filesystem::path link = stream == STDOUT_FILENO ? "/dev/stdout" : "/dev/stderr";
        const int result = runInChild([&] {
            const int reader = open(pipe.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
            const int writer = open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
            const int before = dup(stream);
            dup2(writer, stream);
            const bool isOne = mayBeLogFile(pipe) && mayBeLogFile(link);
            close(reader);
            const bool isNoneAfterwards = !mayBeLogFile(pipe) && !mayBeLogFile(link);
            dup2(before, stream);
            EXPECT_TRUE(isOne);
            EXPECT_TRUE(isNoneAfterwards);
        });
        EXPECT_EQ(result, 0);
    }
}

} // namespace
