#include "Tools/CameraHub/Terminal/OutputFile.h"

#include "Tests/Support/TemporaryFolder.h"
#include "Tools/CameraHub/Terminal/ExitCode.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

using namespace CommandLine;

namespace {

const std::vector<std::uint8_t> bytes = {'n', 'e', 'w'};

int filesIn(const std::filesystem::path& folder) {
    return static_cast<int>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

} // namespace

TEST(OutputFileTest, TakesThePlaceOfWhatStandsThere) {
    const TemporaryFolder folder;
    writeFile(folder.path() / "a.png", "old and longer");
    writeFile(folder.path() / "a.png", bytes);
    EXPECT_EQ(readFile(folder.path() / "a.png"), "new");
    EXPECT_EQ(filesIn(folder.path()), 1);
}

TEST(OutputFileTest, UnderANewNameNeverTakesThePlaceOfAnother) {
    const TemporaryFolder folder;
    EXPECT_EQ(writeNewFile(folder.path(), "a.b", ".png", bytes), folder.path() / "a.b.png");
    EXPECT_EQ(writeNewFile(folder.path(), "a.b", ".png", bytes), folder.path() / "a.b-2.png");
    writeFile(folder.path() / "a.b.png", "old");
    EXPECT_EQ(writeNewFile(folder.path(), "a.b", ".png", bytes), folder.path() / "a.b-3.png");
    EXPECT_EQ(readFile(folder.path() / "a.b.png"), "old");
    EXPECT_EQ(readFile(folder.path() / "a.b-3.png"), "new");
    EXPECT_EQ(filesIn(folder.path()), 3);
}

TEST(OutputFileTest, HasTheRightsOfAnyNewFile) {
    const TemporaryFolder folder;
    const mode_t mask = umask(027);
    writeFile(folder.path() / "a.png", bytes);
    umask(mask);
    EXPECT_EQ(std::filesystem::status(folder.path() / "a.png").permissions(), std::filesystem::perms(0640));
}

TEST(OutputFileTest, ThatCannotBeWrittenIsAFailureThatSaysWhere) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "gone" / "a.png";
    try {
        writeFile(file, bytes);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), ExitCode::NotWritten);
        EXPECT_EQ(failure.what(),
                  "cannot write " + file.string() + ": No such file or directory; name another place with -o");
    }
}

TEST(OutputFileTest, ThatCannotHaveItsNameLeavesNothingBehind) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "a.png");
    EXPECT_THROW(writeFile(folder.path() / "a.png", bytes), Failure);
    EXPECT_EQ(filesIn(folder.path()), 1);
}

TEST(OutputFileTest, FoldersAreMadeWithTheirParents) {
    const TemporaryFolder folder;
    makeFolder(folder.path() / "a" / "b");
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "a" / "b"));
    makeFolder(folder.path() / "a" / "b");
    writeFile(folder.path() / "file", "");
    EXPECT_THROW(makeFolder(folder.path() / "file"), Failure);
}
