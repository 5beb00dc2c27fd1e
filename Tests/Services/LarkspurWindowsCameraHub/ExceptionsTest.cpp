#include "Services/LarkspurWindowsCameraHub/Exceptions.h"

#include <gtest/gtest.h>

namespace {

using namespace Halden::LarkspurWindowsCameraHub::Exceptions;

TEST(Exceptions, AServiceExceptionHasItsTextUnchanged) { EXPECT_STREQ(ServiceException("text ").what(), "text "); }

TEST(Exceptions, AnUnsupportedMethodIsNamedBehindTheText) {
    EXPECT_STREQ(MethodNotSupported("camera:dance").what(), "Method not supported: camera:dance");
}

TEST(Exceptions, AnEmptyMethodLeavesTheTrailingBlank) {
    EXPECT_STREQ(MethodNotSupported("").what(), "Method not supported: ");
}

TEST(Exceptions, AFailedRedirectionNamesThePath) {
    EXPECT_STREQ(RedirectDiagnosticsFailed("/a b").what(), "Failed redirecting diagnostics to: /a b");
}

TEST(Exceptions, APlatformFailureHasContextMessageAndCodeWithoutABlankBeforeTheBracket) {
    EXPECT_STREQ(winrtExceptionWrapper(u"captureImage failed", u"Device lost.", 5).what(),
                 "captureImage failed: Device lost.(5)");
}

TEST(Exceptions, ANegativeCodeKeepsItsMinusSign) {
    EXPECT_STREQ(winrtExceptionWrapper(u"captureImage failed", u"m", -2147024891).what(),
                 "captureImage failed: m(-2147024891)");
}

TEST(Exceptions, AMessageThatEndsInALineBreakKeepsIt) {
    EXPECT_STREQ(winrtExceptionWrapper(u"c", u"m\r\n", -1).what(), "c: m\r\n(-1)");
}

TEST(Exceptions, TheTextOfAPlatformFailureIsUtf8) {
    EXPECT_STREQ(winrtExceptionWrapper(u"c", u"Gerät \U0001F4F7", 1).what(), "c: Gerät 📷(1)");
}

TEST(Exceptions, EachIsAServiceExceptionAndThatIsARuntimeError) {
    EXPECT_THROW(throw MethodNotSupported("m"), ServiceException);
    EXPECT_THROW(throw RedirectDiagnosticsFailed("p"), ServiceException);
    EXPECT_THROW(throw winrtExceptionWrapper(u"c", u"m", 1), ServiceException);
    EXPECT_THROW(throw ServiceException("s"), std::runtime_error);
}

} // namespace
