#include "Framework/CXX/Diagnostics/LoggingConfiguration.h"

#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"
#include "Tests/Support/ChildProcess.h"

#include <gmock/gmock.h>
#include <log4cxx/logger.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <clocale>
#include <csignal>
#include <map>
#include <new>
#include <thread>

namespace {

using log4cxx::Logger;

/// A count that a child shares with its parent.
class SharedCount {
public:
    SharedCount()
        : _memory(mmap(nullptr, sizeof(Count), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)),
          _count(_memory != MAP_FAILED ? new(_memory) Count(0) : throw std::bad_alloc()) {}
    ~SharedCount() { munmap(_memory, sizeof(Count)); }
    SharedCount(const SharedCount&) = delete;
    SharedCount& operator=(const SharedCount&) = delete;

    std::atomic<std::size_t>& operator*() const { return *_count; }

private:
    using Count = std::atomic<std::size_t>;

    void* const _memory;
    Count* const _count;
};

class LoggingConfigurationTest : public DiagnosticsFixture {
protected:
    std::filesystem::path properties() const { return root() / "test.properties"; }

    static std::string fileAppender(const std::string& name, const std::string& file) {
        const std::string key = "log4j.appender." + name;
        return key + "=org.apache.log4j.FileAppender\n" + key + ".File=" + file + "\n" + key + ".Append=false\n" + key +
               ".layout=org.apache.log4j.PatternLayout\n" + key +
               ".layout.ConversionPattern=%d{%Y-%b-%d %H:%M:%S } [%4t] %-6p %c - %m%n\n";
    }

    void configure(const std::string& text) const {
        writeFile(properties(), text);
        Halden::configureLogging(properties());
    }

    /// Root and "Product" each have a file in that folder.
    void configureTwoFiles(const std::string& folder) const {
        configure(
            "log4j.rootLogger=INFO, DEFAULT\nlog4j.logger.Product=INFO, PRODUCT\nlog4j.logger.Other=INFO, PRODUCT\n" +
            fileAppender("DEFAULT", root() / folder / "DEFAULT.log") +
            fileAppender("PRODUCT", root() / folder / "PRODUCT.log"));
    }

    /// The different messages in the files of that name of all folders.
    std::set<std::string> messagesIn(const std::string& file) const {
        std::set<std::string> messages;
        for (const auto& run : std::filesystem::directory_iterator(root())) {
            if (run.is_directory() && std::filesystem::exists(run.path() / file)) {
                const std::string text = readFile(run.path() / file);
                for (std::size_t at = text.find(" - "); at != std::string::npos; at = text.find(" - ", at + 1))
                    messages.insert(text.substr(at + 3, text.find('\n', at) - at - 3));
            }
        }
        return messages;
    }

    static std::size_t linesIn(const std::string& text) {
        return static_cast<std::size_t>(std::ranges::count(text, '\n'));
    }
};

TEST_F(LoggingConfigurationTest, LinesReachTheFilesOfAllAncestors) {
    configureTwoFiles("a");
    LOG4CXX_INFO(Logger::getLogger("Product.Part"), "both");
    LOG4CXX_INFO(Logger::getLogger("Somebody"), "one");
    EXPECT_EQ(linesIn(readFile(root() / "a" / "PRODUCT.log")), 1U);
    EXPECT_EQ(linesIn(readFile(root() / "a" / "DEFAULT.log")), 2U);
}

TEST_F(LoggingConfigurationTest, TheLineHasItsFormat) {
    configureTwoFiles("a");
    LOG4CXX_WARN(Logger::getLogger("Product.Part"), "text");
    const std::string log = readFile(root() / "a" / "PRODUCT.log");
    EXPECT_THAT(log,
                testing::MatchesRegex(
                    "[0-9]{4}-(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2} "
                    " \\[0x[0-9a-f]+\\] WARN   Product\\.Part - text\n"));
}

TEST_F(LoggingConfigurationTest, ANewOneReplacesTheOldAndClosesItsFiles) {
    configureTwoFiles("a");
    configureTwoFiles("b");
    LOG4CXX_INFO(Logger::getLogger("Product"), "text");
    EXPECT_EQ(readFile(root() / "a" / "DEFAULT.log"), "");
    EXPECT_EQ(linesIn(readFile(root() / "b" / "PRODUCT.log")), 1U);
    EXPECT_EQ(openFiles(), (std::set<std::string>{root() / "b" / "DEFAULT.log", root() / "b" / "PRODUCT.log"}));
}

TEST_F(LoggingConfigurationTest, ALoggerThatIsNoLongerConfiguredLetsGoOfItsFile) {
    configureTwoFiles("a");
    configure("log4j.rootLogger=INFO, DEFAULT\n" + fileAppender("DEFAULT", root() / "b" / "DEFAULT.log"));
    EXPECT_EQ(openFiles(), std::set<std::string>{root() / "b" / "DEFAULT.log"});
}

TEST_F(LoggingConfigurationTest, TheBasicOneClosesTheFilesToo) {
    configureTwoFiles("a");
    Halden::configureBasicLogging();
    EXPECT_EQ(openFiles(), std::set<std::string>());
}

TEST_F(LoggingConfigurationTest, LevelsFollowTheFile) {
    configure("log4j.rootLogger=WARN\nlog4j.logger.Product=DEBUG\nlog4j.additivity.Product=false\n");
    EXPECT_FALSE(Logger::getRootLogger()->isInfoEnabled());
    EXPECT_TRUE(Logger::getLogger("Product")->isDebugEnabled());
    EXPECT_FALSE(Logger::getLogger("Product")->getAdditivity());
    configure("log4j.rootLogger=INFO\nlog4j.logger.Product=INHERITED\n");
    EXPECT_TRUE(Logger::getRootLogger()->isInfoEnabled());
    EXPECT_FALSE(Logger::getLogger("Product")->isDebugEnabled());
    EXPECT_TRUE(Logger::getLogger("Product")->getAdditivity());
}

TEST_F(LoggingConfigurationTest, ABrokenFileIsNoError) {
    EXPECT_NO_THROW(
        configure("log4j.rootLogger=LOUD, MISSING\nlog4j.logger.=x\n=\n\\\nlog4j.appender.A=org.Nothing\n"));
    EXPECT_NO_THROW(configure(std::string("\0\xFF\xFE\n", 4)));
    EXPECT_NO_THROW(Halden::configureLogging(root() / "missing"));
    EXPECT_NO_THROW(LOG4CXX_INFO(Logger::getLogger("Product"), "text"));
}

TEST_F(LoggingConfigurationTest, AFileThatCannotBeUsedLeavesAllAsItWasAndSaysSo) {
    std::string deep = "log4j.rootLogger=${a0}\n";
    for (int link = 0; link < 1'000; ++link)
        deep += "a" + std::to_string(link) + "=${a" + std::to_string(link + 1) + "}\n";
    const std::map<std::string, std::string> unusable = {
        {"log4j.rootLogger=${log4j.rootLogger}\n", "its variables lead in a circle"},
        {"log4j.rootLogger=${a}\na=${b}\nb=${a}\n", "its variables lead in a circle"},
        {"log4j.rootLogger=${a}${\na=${log4j.rootLogger}\n", "its variables lead in a circle"},
        {deep, "its variables lead in a circle, or too far"},
        {"log4j.logger." + std::string(1000, '.') + "=INFO\n", "the name is too long"},
        {std::string(70'000, '#'), "it is longer than 65536 bytes"},
    };
    configureTwoFiles("a");
    for (const auto& [text, reason] : unusable) {
        testing::internal::CaptureStderr();
        configure(text);
        const std::string told = testing::internal::GetCapturedStderr();
        EXPECT_NE(told.find(properties().native()), std::string::npos) << told;
        EXPECT_NE(told.find(reason), std::string::npos) << told << reason;
        const std::string log = readFile(root() / "a" / "DEFAULT.log");
        EXPECT_NE(log.find(reason), std::string::npos) << log << reason;
    }
    EXPECT_EQ(openFiles(), (std::set<std::string>{root() / "a" / "DEFAULT.log", root() / "a" / "PRODUCT.log"}));
}

TEST_F(LoggingConfigurationTest, WhatIsNoRegularFileLeavesAllAsItWasAndSaysSo) {
    configureTwoFiles("a");
    ASSERT_EQ(mkfifo((root() / "pipe").c_str(), 0600), 0);
    for (const std::filesystem::path& path :
         {root() / "pipe", root(), root() / "missing", std::filesystem::path("/dev/zero")}) {
        Halden::configureLogging(path);
        const std::string log = readFile(root() / "a" / "DEFAULT.log");
        EXPECT_NE(log.find("open on " + path.native()), std::string::npos) << log;
    }
}

TEST_F(LoggingConfigurationTest, APipeIsNoLogFileAndTheOthersAre) {
    const std::string pipe = root() / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string rolling = "log4j.appender.ROLLING";
    configure("log4j.rootLogger=INFO, PIPE, ROLLING, GOOD\n" + fileAppender("PIPE", pipe) +
              "log4j.appender.PIPE.FILENAME=" + pipe + "\n" + //
              rolling + "=org.apache.log4j.rolling.RollingFileAppender\n" + rolling +
              ".layout=org.apache.log4j.SimpleLayout\n" + rolling +
              ".rollingPolicy=org.apache.log4j.rolling.TimeBasedRollingPolicy\n" + rolling +
              ".rollingPolicy.FileNamePattern=" + pipe + "%d\n" + rolling + ".rollingPolicy.activeFileName=" + pipe +
              "\n" + fileAppender("GOOD", root() / "good.log"));
    LOG4CXX_INFO(Logger::getRootLogger(), "text");
    EXPECT_EQ(linesIn(readFile(root() / "good.log")), 1U);
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

TEST_F(LoggingConfigurationTest, AFullDiskCostsLinesOnly) {
    configure("log4j.rootLogger=INFO, FULL, GOOD\n" + fileAppender("FULL", "/dev/full") +
              fileAppender("GOOD", root() / "good.log"));
    testing::internal::CaptureStderr();
    for (int line = 0; line < 3; ++line)
        EXPECT_NO_THROW(LOG4CXX_INFO(Logger::getRootLogger(), "text"));
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_NE(told.find("Lines of the log are lost, appender FULL"), std::string::npos) << told;
    EXPECT_EQ(told.find("lost"), told.rfind("lost")) << "told once";
    EXPECT_EQ(linesIn(readFile(root() / "good.log")), 3U);
}

TEST_F(LoggingConfigurationTest, TextBeyondAsciiIsUtf8WhereTheUsersLocaleIsPlain) {
    // In a child: the logging library remembers the encoding that it meets first.
    const int result = runInChild([this] {
        const ScopedEnvironment all("LC_ALL", "C");
        std::setlocale(LC_ALL, "C.UTF-8");
        configureTwoFiles("a");
        std::setlocale(LC_ALL, ""); // as the application object does
        std::setlocale(LC_ALL, "C.UTF-8");
        LOG4CXX_INFO(Logger::getRootLogger(), "K\xC3\xA4se \xF0\x9F\x93\xB7 " << 1234567 << " " << 1.5);
        const std::string log = readFile(root() / "a" / "DEFAULT.log");
        EXPECT_TRUE(log.ends_with(" - K\xC3\xA4se \xF0\x9F\x93\xB7 1234567 1.5\n")) << log;
    });
    EXPECT_EQ(result, 0);
}

TEST_F(LoggingConfigurationTest, NoLineIsLostWhenTheProcessDiesDuringTheChanges) {
    constexpr std::size_t lines = 500;
    constexpr int mostChanges = 100'000; // it dies long before
    const SharedCount logged;
    const int result = runInChild([&] {
        configureTwoFiles("start");
        std::thread([&logged] {
            const log4cxx::LoggerPtr logger = Logger::getLogger("Product");
            for (; *logged < lines; ++*logged)
                LOG4CXX_INFO(logger, "line " << *logged << ".");
            raise(SIGKILL);
        }).detach();
        for (int change = 0; change < mostChanges; ++change)
            configureTwoFiles("run" + std::to_string(change));
    });
    EXPECT_EQ(result, -SIGKILL);
    EXPECT_EQ(*logged, lines);
    for (const char* const file : {"DEFAULT.log", "PRODUCT.log"})
        EXPECT_EQ(messagesIn(file).size(), lines) << file;
}

TEST_F(LoggingConfigurationTest, NoLineOfAnotherThreadIsLostInTwoHundredChanges) {
    constexpr int changes = 200;
    constexpr int threadCount = 3;
    constexpr int fewestLines = 2000; // of each thread
    const std::vector<std::string> loggers = {"Product.A", "Product", "Other.B"};
    configureTwoFiles("start");
    std::atomic<bool> done = false;
    std::vector<int> written(threadCount);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            const log4cxx::LoggerPtr logger = Logger::getLogger(loggers[thread]);
            int& line = written[thread];
            while (!done || line < fewestLines) {
                LOG4CXX_INFO(logger, "thread " << thread << " line " << line << ".");
                ++line;
                if (line > fewestLines)
                    std::this_thread::yield();
            }
        });
    }
    for (int change = 0; change < changes; ++change)
        configureTwoFiles("run" + std::to_string(change));
    done = true;
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(openFiles().size(), 2U);
    for (const char* const file : {"DEFAULT.log", "PRODUCT.log"}) {
        std::size_t expected = 0;
        for (const int lines : written)
            expected += static_cast<std::size_t>(lines);
        EXPECT_EQ(messagesIn(file).size(), expected) << file;
    }
}

} // namespace
