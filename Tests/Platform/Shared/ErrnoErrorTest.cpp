#include "Platform/Shared/ErrnoError.h"

#include <gtest/gtest.h>

#include <cerrno>

using namespace Platform::Shared;

namespace {

TEST(ErrnoErrorTest, EachErrorNumberHasItsCode) {
    const auto code = [](std::uint32_t value) { return static_cast<winrt::hresult>(value); };
    EXPECT_EQ(codeOfErrno(EACCES), code(0x80070005));
    EXPECT_EQ(codeOfErrno(EPERM), code(0x80070005));
    EXPECT_EQ(codeOfErrno(ENOENT), code(0x80070002));
    EXPECT_EQ(codeOfErrno(ENODEV), code(0x80070002));
    EXPECT_EQ(codeOfErrno(ESHUTDOWN), code(0x80070002));
    EXPECT_EQ(codeOfErrno(ENXIO), code(0x80070002));
    EXPECT_EQ(codeOfErrno(EBUSY), code(0x800700AA));
    EXPECT_EQ(codeOfErrno(EINVAL), code(0x80070057));
    EXPECT_EQ(codeOfErrno(ENOMEM), code(0x8007000E));
    EXPECT_EQ(codeOfErrno(ETIMEDOUT), code(0x800705B4));
    EXPECT_EQ(codeOfErrno(EIO), code(0x80004005));
    EXPECT_EQ(codeOfErrno(EEXIST), code(0x80004005));
}

TEST(ErrnoErrorTest, TextNamesOperationDeviceAndReason) {
    const auto error = errnoError("VIDIOC_S_FMT", "/dev/video0", EBUSY);
    EXPECT_EQ(error.message(), u"VIDIOC_S_FMT on /dev/video0: Device or resource busy");
    EXPECT_EQ(error.code(), winrt::result::busy);
}

} // namespace
