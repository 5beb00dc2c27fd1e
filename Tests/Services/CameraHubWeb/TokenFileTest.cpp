#include "Services/CameraHubWeb/TokenFile.h"

#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace CameraHubWeb {
namespace {

using testing::HasSubstr;

class TokenFileTest : public testing::Test {
protected:
    std::string fileWith(const std::string& text) const {
        writeFile(_folder.path() / "token", text);
        return (_folder.path() / "token").string();
    }

    std::string refusal(const std::string& file) const {
        try {
            readToken(file);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    const TemporaryFolder _folder;
};

TEST_F(TokenFileTest, TheTokenIsTheFirstLine) {
    EXPECT_EQ(readToken(fileWith("0123456789abcdef")), "0123456789abcdef");
    EXPECT_EQ(readToken(fileWith("0123456789abcdef\nnever read")), "0123456789abcdef");
    EXPECT_EQ(readToken(fileWith("0123456789abcdef\r\n")), "0123456789abcdef");
    EXPECT_EQ(readToken(fileWith(std::string(1024, 'a'))), std::string(1024, 'a'));
}

TEST_F(TokenFileTest, ATokenThatIsEasyToGuessOrHardToSendIsRefused) {
    for (const std::string& text :
         {std::string(), std::string("\n0123456789abcdef"), std::string("0123456789abcde"),
          std::string("01234567 89abcdef"), std::string("0123456789abcd\xC3\xA4"), std::string(1025, 'a')})
        EXPECT_THAT(refusal(fileWith(text)), HasSubstr("16 to 1024 characters")) << text;
}

TEST_F(TokenFileTest, AFileThatIsNotThereOrNoneIsTold) {
    EXPECT_THAT(refusal((_folder.path() / "other").string()), HasSubstr("cannot be read"));
    EXPECT_THAT(refusal(_folder.path().string()), HasSubstr("cannot be read"));
    EXPECT_THAT(refusal("/dev/zero"), HasSubstr("cannot be read"));
}

} // namespace
} // namespace CameraHubWeb
