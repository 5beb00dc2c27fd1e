#include "Framework/CXX/System/FolderWalk.h"

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/FailingSystemCall.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <vector>

namespace {

using Halden::System::FolderEntry;
using Halden::System::FolderWalk;

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    FolderWalk walk(folder);
    std::vector<std::string> names;
    while (const std::optional<FolderEntry> entry = walk.next())
        names.push_back(entry->name);
    EXPECT_EQ(walk.readError(), 0);
    return names;
}

TEST(FolderWalkTest, DeliversTheFolderAndItsParentFirst) {
    const TemporaryFolder folder;
    for (const char* const name : {"!", "a", "b"})
        std::filesystem::create_directory(folder.path() / name);
    std::vector<std::string> names = namesIn(folder.path());
    ASSERT_EQ(names.size(), 5U);
    EXPECT_EQ(names[0], ".");
    EXPECT_EQ(names[1], "..");
    std::sort(names.begin() + 2, names.end());
    EXPECT_EQ(std::vector<std::string>(names.begin() + 2, names.end()), (std::vector<std::string>{"!", "a", "b"}));
}

TEST(FolderWalkTest, AnEmptyFolderHasTheTwo) {
    const TemporaryFolder folder;
    EXPECT_EQ(namesIn(folder.path()), (std::vector<std::string>{".", ".."}));
}

TEST(FolderWalkTest, DeliversFilesAndBrokenLinksToo) {
    const TemporaryFolder folder;
    writeFile(folder.path() / "file", "");
    std::filesystem::create_symlink("nowhere", folder.path() / "link");
    EXPECT_EQ(namesIn(folder.path()).size(), 4U);
}

TEST(FolderWalkTest, TellsWhyAFolderCantBeOpened) {
    const TemporaryFolder folder;
    FolderWalk walk(folder.path() / "missing");
    EXPECT_EQ(walk.openError(), ENOENT);
    EXPECT_FALSE(walk.next().has_value());
}

TEST(FolderWalkTest, TellsWhyItEndedEarly) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "a");
    const int result = runInChild([&folder] {
        FolderWalk walk(folder.path());
        ASSERT_TRUE(letSystemCallFail(SYS_getdents64, EIO));
        EXPECT_TRUE(walk.next().has_value()); // the folder itself
        EXPECT_TRUE(walk.next().has_value()); // its parent
        EXPECT_EQ(walk.readError(), 0);
        EXPECT_FALSE(walk.next().has_value());
        EXPECT_EQ(walk.openError(), 0);
        EXPECT_EQ(walk.readError(), EIO);
    });
    EXPECT_EQ(result, 0);
}

TEST(FolderWalkTest, TellsTheTimeOfCreation) {
    const TemporaryFolder folder;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    std::filesystem::create_directory(folder.path() / "a");
    FolderWalk walk(folder.path());
    walk.next();
    walk.next();
    const std::optional<FolderEntry> entry = walk.next();
    ASSERT_TRUE(entry.has_value());
    const std::chrono::nanoseconds created(entry->creationTime);
    // File systems use a clock that lags behind by some milliseconds.
    EXPECT_LT(std::chrono::abs(created - now), patience);
}

TEST(CreationTimeOfTest, IsTheBirthTimeWhereThereIsOne) {
    struct statx attributes{};
    attributes.stx_mask = STATX_BTIME | STATX_MTIME;
    attributes.stx_btime.tv_sec = 5;
    attributes.stx_btime.tv_nsec = 7;
    attributes.stx_mtime.tv_sec = 9;
    EXPECT_EQ(Halden::System::creationTimeOf(attributes), 5'000'000'007);
}

TEST(CreationTimeOfTest, IsTheTimeOfTheLastChangeOtherwise) {
    struct statx attributes{};
    attributes.stx_mask = STATX_MTIME;
    attributes.stx_btime.tv_sec = 5;
    attributes.stx_mtime.tv_sec = 9;
    attributes.stx_mtime.tv_nsec = 1;
    EXPECT_EQ(Halden::System::creationTimeOf(attributes), 9'000'000'001);
}

} // namespace
