#include "Framework/CXX/Diagnostics/FileSystem.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

namespace {

class FileSystemTest : public testing::Test {
protected:
    std::string pathOf(const std::string& name) const { return _folder.path() / name; }
    std::u16string textOf(const std::string& name) const { return Halden::toUtf16(pathOf(name)); }

    void expectError(const std::function<void()>& work, const std::string& operation, std::errc code,
                     const std::string& name) const {
        try {
            work();
            ADD_FAILURE() << "nothing thrown";
        } catch (const std::filesystem::filesystem_error& error) {
            EXPECT_EQ(error.code(), code) << error.what();
            EXPECT_EQ(error.path1(), pathOf(name));
            for (const std::string& told : {operation, error.code().message(), '"' + pathOf(name) + '"'})
                EXPECT_NE(std::string(error.what()).find(told), std::string::npos) << error.what();
        }
    }

    void expectCreateError(const std::string& name, std::errc code) const {
        expectError([&] { defaultFileSystem().create_directory(textOf(name)); }, "create_directory", code, name);
    }

private:
    TemporaryFolder _folder;
};

TEST_F(FileSystemTest, CreateDirectoryMakesTheFolder) {
    EXPECT_TRUE(defaultFileSystem().create_directory(textOf("a")));
    EXPECT_TRUE(std::filesystem::is_directory(pathOf("a")));
}

TEST_F(FileSystemTest, PathsBeyondAsciiAreUtf8) {
    EXPECT_TRUE(defaultFileSystem().create_directory(textOf("K\xC3\xA4se \xF0\x9F\x93\xB7")));
    EXPECT_TRUE(std::filesystem::is_directory(pathOf("K\xC3\xA4se \xF0\x9F\x93\xB7")));
    EXPECT_TRUE(defaultFileSystem().exists(textOf("K\xC3\xA4se \xF0\x9F\x93\xB7")));
}

TEST_F(FileSystemTest, CreateDirectoryOfAnExistingFolderIsFalse) {
    std::filesystem::create_directory(pathOf("a"));
    std::filesystem::create_directory_symlink("a", pathOf("link"));
    EXPECT_FALSE(defaultFileSystem().create_directory(textOf("a")));
    EXPECT_FALSE(defaultFileSystem().create_directory(textOf("link")));
}

TEST_F(FileSystemTest, CreateDirectoryOfAnExistingFileThrowsThatItExists) {
    writeFile(pathOf("a"), "");
    expectCreateError("a", std::errc::file_exists);
}

TEST_F(FileSystemTest, CreateDirectoryOfABrokenLinkThrowsWhyItCantBeLookedAt) {
    std::filesystem::create_symlink("nowhere", pathOf("a"));
    expectCreateError("a", std::errc::no_such_file_or_directory);
}

TEST_F(FileSystemTest, CreateDirectoryMakesNoParents) {
    expectCreateError("missing/a", std::errc::no_such_file_or_directory);
    EXPECT_FALSE(std::filesystem::exists(pathOf("missing")));
}

TEST_F(FileSystemTest, CreateDirectoryBelowAFileThrows) {
    writeFile(pathOf("a"), "");
    expectCreateError("a/b", std::errc::not_a_directory);
}

TEST_F(FileSystemTest, FilesFoldersAndBrokenLinksExist) {
    writeFile(pathOf("file"), "");
    std::filesystem::create_directory(pathOf("folder"));
    std::filesystem::create_symlink("nowhere", pathOf("link"));
    EXPECT_TRUE(defaultFileSystem().exists(textOf("file")));
    EXPECT_TRUE(defaultFileSystem().exists(textOf("folder")));
    EXPECT_TRUE(defaultFileSystem().exists(textOf("link")));
}

TEST_F(FileSystemTest, MissingPathsAndImpossibleNamesDoNotExist) {
    writeFile(pathOf("file"), "");
    EXPECT_FALSE(defaultFileSystem().exists(textOf("missing")));
    EXPECT_FALSE(defaultFileSystem().exists(textOf("missing/a")));
    EXPECT_FALSE(defaultFileSystem().exists(textOf("file/a")));
    EXPECT_FALSE(defaultFileSystem().exists(textOf(std::string(300, 'a'))));
    EXPECT_FALSE(defaultFileSystem().exists(u""));
}

TEST_F(FileSystemTest, ExistsThrowsWhatItCantTell) {
    std::filesystem::create_symlink("loop", pathOf("loop"));
    expectError([&] { defaultFileSystem().exists(textOf("loop/a")); }, "exists",
                std::errc::too_many_symbolic_link_levels, "loop/a");
}

} // namespace
