#include "Framework/CXX/Common/RunCatch.h"

#include "Tests/Support/LogRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <utility>

using Halden::HaldenException;
using Halden::HaldenExceptionBase;
using Halden::RunCatch;
using testing::ElementsAre;

namespace {

/// A framework exception that knows where it was thrown.
class LocatedException : public HaldenException {
public:
    LocatedException(std::u16string text, std::string sourceFile, int sourceLine) : HaldenException(std::move(text)) {
        file = std::move(sourceFile);
        line = sourceLine;
    }
};

/// Of the family, but no HaldenException.
class Relative : public HaldenExceptionBase {
public:
    Relative() : HaldenExceptionBase(u"relative", "a", 12) {}
};

class SilentException : public std::exception {
public:
    const char* what() const noexcept override { return ""; }
};

/// Puts the list of handlers back as it was.
class ScopedHandlers {
public:
    ScopedHandlers() : _saved(Halden::catchHandlers()) {}
    ~ScopedHandlers() { Halden::catchHandlers() = _saved; }
    ScopedHandlers(const ScopedHandlers&) = delete;
    ScopedHandlers& operator=(const ScopedHandlers&) = delete;

private:
    std::vector<Halden::CatchHandler> _saved;
};

template <typename Thrown> LogRecord recordOfThrowing(Thrown thrown) {
    const LogRecorder recorder("Common.RunCatch");
    EXPECT_EQ(RunCatch(7, [&]() -> int { throw thrown; }), 7);
    const auto records = recorder.records();
    EXPECT_EQ(records.size(), 1U);
    return records.empty() ? LogRecord{} : records.front();
}

TEST(HaldenExceptionTest, DescriptionIsTheMessageWithoutALocation) {
    EXPECT_EQ(HaldenException(u"Invalid diagnostics").getDescription(), u"Invalid diagnostics");
    EXPECT_EQ(HaldenException(u"\u20AC").getDescriptionUtf8(), "\xE2\x82\xAC");
}

TEST(HaldenExceptionTest, LocationFollowsTheMessage) {
    EXPECT_EQ(LocatedException(u"Broken", "a", 12).getDescription(), u"Broken @ a:12");
    EXPECT_EQ(LocatedException(u"Broken", "a", 0).getDescription(), u"Broken @ a:0");
    EXPECT_EQ(LocatedException(u"Broken", "a", -1).getDescription(), u"Broken");
    EXPECT_EQ(LocatedException(u"Broken", "a", -2).getDescription(), u"Broken @ a:-2");
}

TEST(HaldenExceptionTest, EachByteOfTheFileBecomesOneUnit) {
    EXPECT_EQ(LocatedException(u"m", "\xC3\xA9", 1).getDescription(), u"m @ \u00C3\u00A9:1");
}

TEST(HaldenExceptionTest, IsNoStandardException) {
    EXPECT_FALSE((std::is_base_of_v<std::exception, HaldenException>));
    EXPECT_TRUE((std::is_copy_constructible_v<HaldenException>));
}

TEST(DescribeExceptionTest, NullPointerGivesAnEmptyText) { EXPECT_EQ(Halden::describeException(nullptr), ""); }

TEST(DescribeExceptionTest, EachFamilyHasItsOwnText) {
    EXPECT_EQ(Halden::describeException(std::make_exception_ptr(LocatedException(u"m", "a", 12))), "m @ a:12");
    EXPECT_EQ(Halden::describeException(std::make_exception_ptr(std::runtime_error("standard"))), "standard");
    EXPECT_EQ(Halden::describeException(std::make_exception_ptr(std::string("text"))), "(...) No details");
    EXPECT_EQ(Halden::describeException(std::make_exception_ptr(Relative())), "(...) No details");
}

TEST(RunCatchTest, HaldenExceptionIsLoggedWithItsDescription) {
    EXPECT_EQ(recordOfThrowing(HaldenException(u"Invalid diagnostics")),
              (LogRecord{"ERROR", "Common.RunCatch", "Caught exception: Invalid diagnostics",
                         "Framework/CXX/Common/RunCatch"}));
}

TEST(RunCatchTest, LocationOfAHaldenExceptionIsLogged) {
    EXPECT_EQ(recordOfThrowing(LocatedException(u"Broken", "a", 12)).message, "Caught exception: Broken @ a:12");
}

TEST(RunCatchTest, ThrownIntegerHasNoDetails) {
    EXPECT_EQ(recordOfThrowing(42).message, "Caught exception: (...) No details");
}

TEST(RunCatchTest, EmptyWhatLeavesNothingBehindTheColonAndItsBlank) {
    EXPECT_EQ(recordOfThrowing(SilentException()).message, "Caught exception: ");
}

TEST(RunCatchTest, GivesTheOperationsResultAndLogsNothing) {
    const LogRecorder recorder("Common.RunCatch");
    EXPECT_EQ(RunCatch(7, [] { return 9; }), 9);
    EXPECT_EQ(RunCatch(std::string("default"), [] { return "result"; }), "result");
    EXPECT_THAT(recorder.messages(), ElementsAre());
}

TEST(RunCatchTest, GivesTheDefaultForAnEmptyOperation) {
    const LogRecorder recorder("Common.RunCatch");
    EXPECT_EQ(RunCatch(7, {}), 7);
    EXPECT_EQ(recorder.records().size(), 1U);
}

TEST(RunCatchTest, LogsNothingWhenTheErrorLevelIsOff) {
    const LogRecorder recorder("Common.RunCatch", log4cxx::Level::getFatal());
    EXPECT_EQ(RunCatch(7, []() -> int { throw std::bad_alloc(); }), 7);
    EXPECT_THAT(recorder.messages(), ElementsAre());
}

TEST(CatchHandlersTest, BeginWithExactlyOneElement) { EXPECT_EQ(Halden::catchHandlers().size(), 1U); }

TEST(HandleCurrentExceptionTest, CallsEveryHandlerInOrderWithTheText) {
    const ScopedHandlers scope;
    const LogRecorder recorder("Common.RunCatch");
    std::vector<std::string> seen;
    Halden::catchHandlers().emplace_back([&](const std::string& text) { seen.push_back("first " + text); });
    Halden::catchHandlers().emplace_back([&](const std::string& text) { seen.push_back("second " + text); });
    RunCatch(0, []() -> int { throw std::runtime_error("x"); });
    EXPECT_THAT(seen, ElementsAre("first x", "second x"));
    EXPECT_EQ(recorder.records().size(), 1U);
}

TEST(HandleCurrentExceptionTest, EmptyHandlerRaisesBadFunctionCall) {
    const ScopedHandlers scope;
    const LogRecorder recorder("Common.RunCatch");
    Halden::catchHandlers().emplace_back();
    EXPECT_THROW(RunCatch(0, []() -> int { throw 1; }), std::bad_function_call);
}

TEST(HandleCurrentExceptionTest, WhatAHandlerThrowsPropagates) {
    const ScopedHandlers scope;
    Halden::catchHandlers() = {[](const std::string&) { throw std::logic_error("handler"); }};
    EXPECT_THROW(RunCatch(0, []() -> int { throw 1; }), std::logic_error);
}

TEST(HandleCurrentExceptionTest, RethrowsTheSameExceptionIfAskedTo) {
    const LogRecorder recorder("Common.RunCatch");
    const auto handleAndRethrow = [] {
        try {
            throw std::out_of_range("range");
        } catch (...) {
            Halden::handleCurrentException(true);
        }
    };
    EXPECT_THROW(handleAndRethrow(), std::out_of_range);
    EXPECT_THAT(recorder.messages(), ElementsAre("Caught exception: range"));
}

} // namespace
