#include "Tests/Support/LogRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cxx/logger.h>

#include <clocale>
#include <string>

using testing::ElementsAre;
using testing::EndsWith;

namespace {

TEST(LogRecorderTest, RecordsALoggerAndItsChildrenFromTheChosenLevelOn) {
    const LogRecorder recorder("LogRecorderTest.Parent", log4cxx::Level::getInfo());
    const auto parent = log4cxx::Logger::getLogger("LogRecorderTest.Parent");
    const auto child = log4cxx::Logger::getLogger("LogRecorderTest.Parent.Child");
    LOG4CXX_DEBUG(parent, "hidden");
    LOG4CXX_INFO(parent, "shown");
    LOG4CXX_ERROR(child, "shown too");

    EXPECT_THAT(recorder.messages(), ElementsAre("shown", "shown too"));
    EXPECT_TRUE(recorder.contains("INFO", "LogRecorderTest.Parent", "shown"));
    EXPECT_TRUE(recorder.contains("ERROR", "LogRecorderTest.Parent.Child", "shown too"));
    EXPECT_FALSE(recorder.contains("WARN", "LogRecorderTest.Parent", "shown"));
    EXPECT_THAT(recorder.records().front().file, EndsWith("LogRecorderTest.cpp"));
}

TEST(LogRecorderTest, Utf8PassesThroughTheLoggingLibraryInAUtf8Locale) {
    // The library reads narrow texts in the process's locale, which is "C" until somebody sets one.
    const std::string previous = std::setlocale(LC_CTYPE, nullptr);
    ASSERT_NE(std::setlocale(LC_CTYPE, "C.UTF-8"), nullptr);
    const LogRecorder recorder("LogRecorderTest.Utf8");
    LOG4CXX_INFO(log4cxx::Logger::getLogger("LogRecorderTest.Utf8"), "\xE2\x82\xAC");
    EXPECT_THAT(recorder.messages(), ElementsAre("\xE2\x82\xAC"));
    std::setlocale(LC_CTYPE, previous.c_str());
}

TEST(LogRecorderTest, GivesTheLevelBackAndForgetsTheAppender) {
    const auto logger = log4cxx::Logger::getLogger("LogRecorderTest.Restored");
    logger->setLevel(log4cxx::Level::getError());
    {
        const LogRecorder recorder(logger, log4cxx::Level::getDebug());
    }
    EXPECT_EQ(logger->getLevel(), log4cxx::Level::getError());
    EXPECT_TRUE(logger->getAllAppenders().empty());
}

TEST(LogRecorderTest, AnInheritedLevelIsInheritedAgain) {
    const auto logger = log4cxx::Logger::getLogger("LogRecorderTest.Inherited");
    {
        const LogRecorder recorder(logger, log4cxx::Level::getDebug());
    }
    EXPECT_EQ(logger->getLevel(), nullptr);
}

} // namespace
