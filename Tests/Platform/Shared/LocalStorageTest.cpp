#include "Platform/Shared/LocalStorage.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Interface/AsyncWait.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

using namespace Platform;
using Platform::Shared::getFileFromPathAsync;
using Platform::Shared::WorkerPool;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Option = CreationCollisionOption;

class LocalStorageTest : public testing::Test {
protected:
    void SetUp() override {
        std::string name = (fs::temp_directory_path() / "camera-hub-storage-XXXXXX").native();
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        _root = name;
        std::ofstream(_root / "program") << "x";
        _folder = blockingWait(fileAt(_root / "program")->GetParentAsync());
    }
    void TearDown() override { fs::remove_all(_root); }

    StorageFile fileAt(const fs::path& path) {
        return blockingWait(getFileFromPathAsync(_pool, Halden::toUtf16(path.native())));
    }
    StorageFile createFile(const std::u16string& name, Option option = Option::GenerateUniqueName) {
        return blockingWait(_folder->CreateFileAsync(name, option));
    }
    StorageFolder createFolder(const std::u16string& name, Option option = Option::OpenIfExists) {
        return blockingWait(_folder->CreateFolderAsync(name, option));
    }
    std::string pathOf(const auto& item) { return Halden::toUtf8(item->Path()); }

    template <typename Operation> winrt::hresult codeOf(const Operation& operation) {
        try {
            operation();
        } catch (const winrt::hresult_error& error) {
            return error.code();
        }
        return winrt::result::ok;
    }

    const std::shared_ptr<WorkerPool> _pool = std::make_shared<WorkerPool>();
    fs::path _root;
    StorageFolder _folder;
};

TEST_F(LocalStorageTest, TheParentOfAFileIsItsFolder) { EXPECT_EQ(pathOf(_folder), _root.native()); }

TEST_F(LocalStorageTest, AMissingFileIsNotFound) {
    EXPECT_EQ(codeOf([&] { fileAt(_root / "none"); }), winrt::result::notFound);
}

TEST_F(LocalStorageTest, AFolderIsNoFile) {
    EXPECT_EQ(codeOf([&] { fileAt(_root); }), winrt::result::fail);
}

TEST_F(LocalStorageTest, ARelativePathIsABadArgument) {
    EXPECT_EQ(codeOf([&] { fileAt("program"); }), winrt::result::invalidArgument);
    EXPECT_EQ(codeOf([&] { fileAt(""); }), winrt::result::invalidArgument);
}

TEST_F(LocalStorageTest, AFolderIsMadeAndThenOpened) {
    EXPECT_EQ(pathOf(createFolder(u"pictures")), (_root / "pictures").native());
    EXPECT_EQ(pathOf(createFolder(u"pictures")), (_root / "pictures").native());
    EXPECT_TRUE(fs::is_directory(_root / "pictures"));
}

TEST_F(LocalStorageTest, ASeparatorAtTheEndOfANameDoesNotCount) {
    EXPECT_EQ(pathOf(createFolder(u"My Camera\\")), (_root / "My Camera").native());
    EXPECT_EQ(pathOf(createFolder(u"Other/")), (_root / "Other").native());
}

TEST_F(LocalStorageTest, ANameWithSeparatorsStaysBelowTheFolder) {
    EXPECT_EQ(pathOf(createFolder(u"a/b\\c\\")), (_root / "a/b/c").native());
    EXPECT_EQ(pathOf(createFile(u"d/e.png")), (_root / "d/e.png").native());
    EXPECT_TRUE(fs::is_directory(_root / "a/b/c"));
}

TEST_F(LocalStorageTest, ANameThatLeadsNowhereOrOutOfTheFolderIsRefused) {
    for (const char16_t* name : {u"", u"\\", u"/", u".", u"..", u"../x", u"a/../../x", u"/etc", u"a//b", u"..\\x"}) {
        EXPECT_EQ(codeOf([&] { createFolder(name); }), winrt::result::invalidArgument) << Halden::toUtf8(name);
        EXPECT_EQ(codeOf([&] { createFile(name); }), winrt::result::invalidArgument) << Halden::toUtf8(name);
    }
    EXPECT_EQ(codeOf([&] { createFile(std::u16string(u"a\0b", 3)); }), winrt::result::invalidArgument);
    EXPECT_EQ(codeOf([&] { createFile(std::u16string(1, u'\xD800')); }), winrt::result::invalidArgument);
    EXPECT_FALSE(fs::exists(_root.parent_path() / "x"));
}

TEST_F(LocalStorageTest, AFolderInThePlaceOfAFileFails) {
    EXPECT_EQ(codeOf([&] { createFolder(u"program"); }), winrt::result::fail);
}

TEST_F(LocalStorageTest, ATakenNameGetsANumber) {
    EXPECT_EQ(pathOf(createFile(u"p.png")), (_root / "p.png").native());
    EXPECT_EQ(pathOf(createFile(u"p.png")), (_root / "p (2).png").native());
    EXPECT_EQ(pathOf(createFile(u"p.png")), (_root / "p (3).png").native());
    EXPECT_EQ(pathOf(createFolder(u"f", Option::GenerateUniqueName)), (_root / "f").native());
    EXPECT_EQ(pathOf(createFolder(u"f", Option::GenerateUniqueName)), (_root / "f (2)").native());
}

TEST_F(LocalStorageTest, AnExistingFileIsOpenedOnRequest) {
    EXPECT_EQ(pathOf(createFile(u"program", Option::OpenIfExists)), (_root / "program").native());
    EXPECT_EQ(fs::file_size(_root / "program"), 1U);
}

TEST_F(LocalStorageTest, AFileIsWrittenAndReadAsAStream) {
    const auto stream = blockingWait(createFile(u"s.bin")->OpenAsync(FileAccessMode::ReadWrite));
    stream->Write(Bytes{1, 2, 3});
    stream->Seek(1);
    stream->Write(Bytes{9});
    EXPECT_EQ(stream->Size(), 3U);
    stream->Seek(0);
    Bytes bytes(5);
    EXPECT_EQ(stream->Read(bytes), 3U);
    EXPECT_EQ(bytes, (Bytes{1, 9, 3, 0, 0}));
    EXPECT_EQ(fs::file_size(_root / "s.bin"), 3U);
}

TEST_F(LocalStorageTest, AFileOpenedForReadingCannotBeWritten) {
    const auto stream = blockingWait(fileAt(_root / "program")->OpenAsync(FileAccessMode::Read));
    EXPECT_NE(codeOf([&] { stream->Write(Bytes{1}); }), winrt::result::ok);
    EXPECT_EQ(fs::file_size(_root / "program"), 1U);
}

TEST_F(LocalStorageTest, AFileThatHasGoneIsNotFound) {
    const StorageFile file = createFile(u"gone");
    fs::remove(_root / "gone");
    EXPECT_EQ(codeOf([&] { blockingWait(file->OpenAsync(FileAccessMode::ReadWrite)); }), winrt::result::notFound);
}

} // namespace
