#include "Services/LarkspurWindowsCameraHubNonUWP/UncaughtException.h"

#include "Framework/CXX/Common/RunCatch.h"
#include "Platform/Interface/HresultError.h"

#include <gtest/gtest.h>

#include <string>

namespace {

template <typename Exception> std::string textOf(const Exception& exception) {
    try {
        throw exception;
    } catch (...) {
        return describeUncaughtException();
    }
}

TEST(UncaughtExceptionTest, APlatformErrorHasItsTextAndItsCodeInDecimalAndHexadecimal) {
    EXPECT_EQ(textOf(winrt::hresult_error(winrt::result::busy, u"VIDIOC_S_FMT on Kam\u00e9ra \U0001F4F7")),
              "VIDIOC_S_FMT on Kam\u00e9ra \U0001F4F7 -2147024726 (0x800700aa)");
}

TEST(UncaughtExceptionTest, ADamagedTextOfAPlatformErrorTellsWhatItCan) {
    EXPECT_EQ(textOf(winrt::hresult_error(winrt::result::fail, std::u16string{u'a', char16_t(0xD800)})),
              "a\uFFFD -2147467259 (0x80004005)");
}

TEST(UncaughtExceptionTest, AnExceptionOfTheFrameworkHasItsDescription) {
    EXPECT_EQ(textOf(Halden::HaldenException(u"Invalid diagnostics")), "Invalid diagnostics");
}

TEST(UncaughtExceptionTest, AnyOtherHasNone) { EXPECT_EQ(textOf(1), ""); }

} // namespace
