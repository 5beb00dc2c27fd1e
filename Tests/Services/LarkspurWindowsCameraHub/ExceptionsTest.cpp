#include "Services/LarkspurWindowsCameraHub/Exceptions.h"

#include <gtest/gtest.h>

namespace {

using namespace Halden::LarkspurWindowsCameraHub::Exceptions;

TEST(ExceptionsTest, AServiceExceptionHasItsTextUnchanged) { EXPECT_STREQ(ServiceException("text ").what(), "text "); }

TEST(ExceptionsTest, AnUnsupportedMethodIsNamedBehindTheText) {
    EXPECT_STREQ(MethodNotSupported("camera:dance").what(), "Method not supported: camera:dance");
}

TEST(ExceptionsTest, AnEmptyMethodLeavesTheTrailingBlank) {
    EXPECT_STREQ(MethodNotSupported("").what(), "Method not supported: ");
}

TEST(ExceptionsTest, AFailedRedirectionNamesThePath) {
    EXPECT_STREQ(RedirectDiagnosticsFailed("/a b").what(), "Failed redirecting diagnostics to: /a b");
}

TEST(ExceptionsTest, APlatformFailureHasContextMessageAndCodeWithoutABlankBeforeTheBracket) {
    EXPECT_STREQ(winrtExceptionWrapper(u"captureImage failed", u"Device lost.", 5).what(),
                 "captureImage failed: Device lost.(5)");
}

TEST(ExceptionsTest, ANegativeCodeKeepsItsMinusSign) {
    EXPECT_STREQ(winrtExceptionWrapper(u"captureImage failed", u"m", -2147024891).what(),
                 "captureImage failed: m(-2147024891)");
}

TEST(ExceptionsTest, AMessageThatEndsInALineBreakKeepsIt) {
    EXPECT_STREQ(winrtExceptionWrapper(u"c", u"m\r\n", -1).what(), "c: m\r\n(-1)");
}

TEST(ExceptionsTest, TheTextOfAPlatformFailureIsUtf8) {
    EXPECT_STREQ(winrtExceptionWrapper(u"c", u"Gerät \U0001F4F7", 1).what(), "c: Gerät 📷(1)");
}

TEST(ExceptionsTest, EachIsAServiceExceptionAndThatIsARuntimeError) {
    EXPECT_THROW(throw MethodNotSupported("m"), ServiceException);
    EXPECT_THROW(throw RedirectDiagnosticsFailed("p"), ServiceException);
    EXPECT_THROW(throw winrtExceptionWrapper(u"c", u"m", 1), ServiceException);
    EXPECT_THROW(throw ServiceException("s"), std::runtime_error);
}

} // namespace
