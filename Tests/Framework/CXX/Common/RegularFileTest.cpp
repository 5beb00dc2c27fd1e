#include "Framework/CXX/Common/RegularFile.h"

#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>

using Halden::FileReading;
using Halden::readRegularFile;

namespace {

class RegularFileTest : public testing::Test {
protected:
    std::filesystem::path file() const { return _folder.path() / "file"; }

    static void expectFailure(const FileReading& reading, const char* operation, int error, const std::string& reason) {
        EXPECT_STREQ(reading.operation, operation);
        EXPECT_EQ(reading.error, error);
        EXPECT_EQ(reading.reason, reason);
        EXPECT_EQ(reading.bytes, "");
    }

private:
    const TemporaryFolder _folder;
};

TEST_F(RegularFileTest, AllBytesAreRead) {
    const std::string bytes = std::string("\0\xFF\r\n", 4) + std::string(100'000, 'x');
    writeFile(file(), bytes);
    const FileReading reading = readRegularFile(file(), bytes.size());
    EXPECT_EQ(reading.bytes, bytes);
    EXPECT_EQ(reading.error, 0);
}

TEST_F(RegularFileTest, AnEmptyFileHasNoBytes) {
    writeFile(file(), "");
    EXPECT_EQ(readRegularFile(file(), 0).error, 0);
    EXPECT_EQ(readRegularFile(file(), 0).bytes, "");
}

TEST_F(RegularFileTest, OneByteTooManyIsAFailure) {
    writeFile(file(), "123456");
    EXPECT_EQ(readRegularFile(file(), 6).bytes, "123456");
    expectFailure(readRegularFile(file(), 5), "read", EFBIG, "it is longer than 5 bytes");
}

TEST_F(RegularFileTest, AHugeFileIsNotRead) {
    writeFile(file(), "");
    std::filesystem::resize_file(file(), std::uintmax_t{1} << 40);
    expectFailure(readRegularFile(file(), 1000), "read", EFBIG, "it is longer than 1000 bytes");
}

TEST_F(RegularFileTest, AFileWhoseSizeIsNotToldIsReadAllTheSameUpToTheLimit) {
    const std::filesystem::path status = "/proc/self/status";
    EXPECT_TRUE(readRegularFile(status, 100'000).bytes.starts_with("Name:"));
    expectFailure(readRegularFile(status, 100), "read", EFBIG, "it is longer than 100 bytes");
}

TEST_F(RegularFileTest, WhatIsNoRegularFileIsAFailureAtOnce) {
    ASSERT_EQ(mkfifo(file().c_str(), 0600), 0);
    expectFailure(readRegularFile(file(), 1000), "open", EINVAL, "it is no regular file");
    expectFailure(readRegularFile("/dev/zero", 1000), "open", EINVAL, "it is no regular file");
    expectFailure(readRegularFile("/", 1000), "open", EISDIR, "Is a directory");
    expectFailure(readRegularFile("/missing", 1000), "open", ENOENT, "No such file or directory");
    expectFailure(readRegularFile("", 1000), "open", ENOENT, "No such file or directory");
}

TEST_F(RegularFileTest, AFailureOfReadingIsTold) {
    const FileReading reading = readRegularFile("/proc/self/mem", 1000); // there is no memory at its beginning
    EXPECT_STREQ(reading.operation, "read");
    EXPECT_EQ(reading.error, EIO);
}

} // namespace
