#include "Services/CameraTestDriver/OutputFolder.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Tests/Services/CameraTestDriver/DriverFixture.h"

#include <fstream>

namespace {

namespace fs = std::filesystem;

class OutputFolderTest : public DriverFixture {
protected:
    OutputFolderTest() { useScenario(R"("groups": [])"); }

    /// The path of the folder, UTF-8.
    std::string open(const std::u16string& name) { return Halden::toUtf8(openOutputFolder(console, name)->Path()); }

    winrt::hresult_error refusalOf(const std::u16string& name) {
        return errorOf([&] { openOutputFolder(console, name); });
    }

    TypedConsole console;
};

TEST_F(OutputFolderTest, StandsBesideTheExecutableUnderTheCamerasName) {
    EXPECT_EQ(open(Halden::toUtf16(cameraName())), outputFolder().native());
    EXPECT_TRUE(fs::is_directory(outputFolder()));
    EXPECT_EQ(console.text(), "");
}

TEST_F(OutputFolderTest, OneThatIsThereIsUsedAsItIs) {
    fs::create_directory(outputFolder());
    std::ofstream(outputFolder() / "older.png").close();
    EXPECT_EQ(open(Halden::toUtf16(cameraName())), outputFolder().native());
    EXPECT_EQ(filesIn(outputFolder()), std::vector<std::string>{"older.png"});
}

TEST_F(OutputFolderTest, ASeparatorInTheNameMakesAFolderWithinAFolder) {
    EXPECT_EQ(open(Halden::toUtf16(cameraName() + "/front/left")), (outputFolder() / "front" / "left").native());
    EXPECT_EQ(open(Halden::toUtf16(cameraName() + "\\back")), (outputFolder() / "back").native());
    EXPECT_TRUE(fs::is_directory(outputFolder() / "front" / "left"));
    EXPECT_TRUE(fs::is_directory(outputFolder() / "back"));
}

TEST_F(OutputFolderTest, NamesThatWouldLeadElsewhereAreRefused) {
    for (const std::u16string name : {u".", u"..", u"../elsewhere", u"camera/../../elsewhere", u"..\\elsewhere",
                                      u"/elsewhere", u"\\elsewhere", u"camera//left"}) {
        EXPECT_EQ(refusalOf(name).code(), winrt::result::invalidArgument) << Halden::toUtf8(name);
    }
    EXPECT_FALSE(fs::exists(executableFolder().parent_path() / "elsewhere"));
    EXPECT_FALSE(fs::exists(executableFolder() / "elsewhere"));
    EXPECT_FALSE(fs::exists("/elsewhere"));
}

TEST_F(OutputFolderTest, ANameOfNothingIsRefused) {
    EXPECT_EQ(refusalOf(u"").code(), winrt::result::invalidArgument);
    EXPECT_EQ(refusalOf(std::u16string(1, u'\xD800')).code(), winrt::result::invalidArgument)
        << "what is not well-formed is nothing in UTF-8";
}

TEST_F(OutputFolderTest, ThreeDotsAreAnOrdinaryName) {
    EXPECT_EQ(open(Halden::toUtf16(cameraName() + "/...")), (outputFolder() / "...").native());
}

TEST_F(OutputFolderTest, ANameMayHaveAnyLetters) {
    EXPECT_EQ(open(Halden::toUtf16(cameraName() + " \u00e9 \U0001F4F7")),
              (outputFolder().native() + " \u00e9 \U0001F4F7"));
    fs::remove(outputFolder().native() + " \u00e9 \U0001F4F7");
}

TEST_F(OutputFolderTest, AFileInItsPlaceRaises) {
    std::ofstream(outputFolder()) << "a file";
    const auto error = refusalOf(Halden::toUtf16(cameraName()));
    EXPECT_LT(error.code(), 0);
    EXPECT_NE(Halden::toUtf8(error.message()).find(cameraName()), std::string::npos) << Halden::toUtf8(error.message());
}

TEST_F(OutputFolderTest, WithoutAnExecutableItIsLookedForElsewhereWithANote) {
    const auto error = errorOf([&] { openOutputFolder(console, u"camera", fs::path()); });
    EXPECT_EQ(console.text(), "\nError getting the path to executable, defaulting output folder to C:\\test");
    EXPECT_EQ(error.code(), winrt::result::invalidArgument) << "there is no such place on this system";
}

TEST_F(OutputFolderTest, AnExecutableThatHasGoneRaises) {
    EXPECT_EQ(errorOf([&] { openOutputFolder(console, u"camera", "/nowhere/program"); }).code(),
              winrt::result::notFound);
}

} // namespace
