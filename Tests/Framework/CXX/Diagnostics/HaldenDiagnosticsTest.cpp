#include "Framework/CXX/Diagnostics/HaldenDiagnostics.h"

#include "Framework/CXX/Common/RunCatch.h"
#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/FileSystem.h"
#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"

#include <gmock/gmock.h>
#include <log4cxx/consoleappender.h>
#include <log4cxx/logger.h>
#include <sys/stat.h>

#include <cstdlib>
#include <functional>

namespace {

using testing::InSequence;
using testing::Return;

auto beginsWith(const std::u16string& text) {
    return testing::Truly([text](const std::u16string& path) { return path.starts_with(text); });
}

auto endsIn(const std::u16string& text) {
    return testing::Truly([text](const std::u16string& path) { return path.ends_with(text); });
}

class MockFileSystem : public IFileSystem {
public:
    virtual ~MockFileSystem() = default;
    MOCK_METHOD(bool, create_directory, (const std::u16string& path), (const, override));
    MOCK_METHOD(bool, exists, (const std::u16string& path), (const, override));
};

void expectInvalid(const std::function<void()>& operation) {
    try {
        operation();
        ADD_FAILURE() << "nothing thrown";
    } catch (const Halden::HaldenException& error) {
        EXPECT_EQ(error.getDescriptionUtf8(), "Invalid diagnostics");
    }
}

class HaldenDiagnosticsTest : public DiagnosticsFixture {
protected:
    static HaldenDiagnostics ordinary(const IFileSystem* fileSystem = nullptr) {
        return {Halden::toUtf16(testAppName), Halden::toUtf16(testVersion), u"", fileSystem};
    }
};

TEST_F(HaldenDiagnosticsTest, ConstructionTouchesNothing) {
    const HaldenDiagnostics diagnostics = ordinary();
    EXPECT_TRUE(std::filesystem::is_empty(common()));
    EXPECT_FALSE(diagnostics.isConfigured());
    EXPECT_FALSE(diagnostics.isValid());
}

TEST_F(HaldenDiagnosticsTest, ConfiguredFoldersNeedNotBeThere) {
    HaldenDiagnostics diagnostics = ordinary();
    diagnostics.initializeLogging();
    EXPECT_TRUE(diagnostics.isConfigured());
    EXPECT_FALSE(diagnostics.isValid()); // the logs are there, made by their appenders, the traces are not
    diagnostics.createFolders(defaultFileSystem());
    EXPECT_TRUE(diagnostics.isValid());
}

TEST_F(HaldenDiagnosticsTest, ValidityIsAskedOfTheFileSystemInOrderEachTime) {
    testing::NiceMock<MockFileSystem> fileSystem;
    HaldenDiagnostics diagnostics = ordinary(&fileSystem);
    EXPECT_FALSE(diagnostics.isValid()); // not configured: nothing is asked
    std::filesystem::create_directories(appFolder());
    diagnostics.initializeLogging();
    const std::u16string all = Halden::toUtf16(allRuns().native());
    const InSequence order;
    EXPECT_CALL(fileSystem, exists(all)).WillOnce(Return(true));
    EXPECT_CALL(fileSystem, exists(beginsWith(all + u"/20"))).WillOnce(Return(true));
    EXPECT_CALL(fileSystem, exists(endsIn(u"/logs"))).WillOnce(Return(true));
    EXPECT_CALL(fileSystem, exists(endsIn(u"/Traces"))).WillOnce(Return(true));
    EXPECT_CALL(fileSystem, exists(all)).WillOnce(Return(true));
    EXPECT_CALL(fileSystem, exists(beginsWith(all + u"/20"))).WillOnce(Return(false));
    EXPECT_TRUE(diagnostics.isValid());
    EXPECT_FALSE(diagnostics.isValid());
}

TEST_F(HaldenDiagnosticsTest, FoldersAreMadeInOrderThroughTheFileSystemGiven) {
    testing::NiceMock<MockFileSystem> own;
    HaldenDiagnostics diagnostics = ordinary(&own);
    std::filesystem::create_directories(appFolder());
    diagnostics.initializeLogging();
    testing::NiceMock<MockFileSystem> given;
    const InSequence order;
    EXPECT_CALL(given, create_directory(endsIn(u"/Diagnostics")));
    EXPECT_CALL(given, create_directory(beginsWith(Halden::toUtf16(allRuns().native()) + u"/20")));
    EXPECT_CALL(given, create_directory(endsIn(u"/logs")));
    EXPECT_CALL(given, create_directory(endsIn(u"/Traces")));
    diagnostics.createFolders(given);
}

TEST_F(HaldenDiagnosticsTest, TheCommonFoldersAreMadeThroughTheObjectsFileSystem) {
    testing::NiceMock<MockFileSystem> fileSystem;
    HaldenDiagnostics diagnostics = ordinary(&fileSystem);
    const InSequence order;
    EXPECT_CALL(fileSystem, create_directory(Halden::toUtf16((common() / "Halden Imaging Group").native())));
    EXPECT_CALL(fileSystem, create_directory(Halden::toUtf16(appFolder().native())));
    diagnostics.initializeLogging();
}

TEST_F(HaldenDiagnosticsTest, WithoutAVersionTheFolderHasTheNameAlone) {
    HaldenDiagnostics diagnostics(u"Some App", u"", u"", nullptr);
    diagnostics.initializeLogging();
    EXPECT_TRUE(std::filesystem::exists(common() / "Halden Imaging Group" / "Some App" / "logging.properties"));
    EXPECT_NE(std::getenv("SOMEAPP_LOG_DIR"), nullptr);
    unsetenv("SOMEAPP_LOG_DIR");
}

TEST_F(HaldenDiagnosticsTest, WhatNeedsAValidObjectThrowsOtherwise) {
    HaldenDiagnostics diagnostics = ordinary();
    expectInvalid([&] { diagnostics.getDiagnosticsFolder(); });
    expectInvalid([&] { diagnostics.getRunFolder(); });
    expectInvalid([&] { diagnostics.getBaseFolder(); });
    expectInvalid([&] { diagnostics.getRunName(); });
    expectInvalid([&] { diagnostics.getLogFolder(); });
    expectInvalid([&] { diagnostics.getTracesFolder(); });
    expectInvalid([&] { diagnostics.getDataFolder("id"); });
    expectInvalid([&] { diagnostics.getCurrentDataFolder(); });
    expectInvalid([&] { diagnostics.getCurrentTraceId(); });
    expectInvalid([&] { diagnostics.getTraceFolder("id"); });
    expectInvalid([&] { diagnostics.getCurrentTraceFolder(); });
    expectInvalid([&] { diagnostics.setCurrentTrace("id"); });
    expectInvalid([&] { diagnostics.trimRunFolders(10); });
    EXPECT_EQ(diagnostics.getDefaultTraceId(), "");
}

TEST_F(HaldenDiagnosticsTest, AFolderThatGoesMakesTheObjectInvalid) {
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    std::filesystem::remove_all(common());
    EXPECT_FALSE(diagnostics->isValid());
    expectInvalid([&] { diagnostics->getRunFolder(); });
}

TEST_F(HaldenDiagnosticsTest, AnEditedConfigurationIsKeptAndObeyed) {
    ASSERT_NE(makeDiagnostics(), nullptr);
    std::string text = readFile(propertiesFile());
    const std::string line = "log4j.rootLogger=INFO, DEFAULT";
    text.replace(text.find(line), line.size(), "log4j.rootLogger=DEBUG, DEFAULT");
    writeFile(propertiesFile(), text);
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_EQ(readFile(propertiesFile()), text);
    EXPECT_TRUE(log4cxx::Logger::getRootLogger()->isDebugEnabled());
    LOG4CXX_DEBUG(log4cxx::Logger::getLogger("Somebody"), "detail");
    const std::string log = readFile(Halden::toUtf8(diagnostics->getLogFolder()) + "/DEFAULT.log");
    EXPECT_NE(log.find("DEBUG  Somebody - detail\n"), std::string::npos) << log;
}

TEST_F(HaldenDiagnosticsTest, AConfigurationInTheSecondPlaceAloneMeansBasicLoggingAndNoFile) {
    std::filesystem::create_directories(localAppFolder());
    writeFile(localAppFolder() / "logging.properties", "log4j.rootLogger=DEBUG\n");
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_FALSE(std::filesystem::exists(propertiesFile()));
    EXPECT_EQ(Halden::toUtf8(diagnostics->getDiagnosticsFolder()), allRuns());
    EXPECT_TRUE(std::filesystem::is_empty(Halden::toUtf8(diagnostics->getLogFolder())));
    EXPECT_EQ(std::filesystem::directory_iterator(localAppFolder())->path(), localAppFolder() / "logging.properties");
    const auto appenders = log4cxx::Logger::getRootLogger()->getAllAppenders();
    ASSERT_EQ(appenders.size(), 1U);
    EXPECT_NE(std::dynamic_pointer_cast<log4cxx::ConsoleAppender>(appenders.front()), nullptr);
}

TEST_F(HaldenDiagnosticsTest, AConfigurationThatCantBeWrittenLeavesTheObjectUnconfigured) {
    std::filesystem::create_directories(appFolder());
    std::filesystem::create_symlink("/nowhere/at/all", propertiesFile());
    HaldenDiagnostics diagnostics = ordinary();
    diagnostics.initializeLogging();
    EXPECT_FALSE(diagnostics.isConfigured());
    EXPECT_EQ(makeDiagnostics(), nullptr);
}

TEST_F(HaldenDiagnosticsTest, WritingTheConfigurationReplacesItAndReportsNoFailure) {
    HaldenDiagnostics diagnostics = ordinary();
    writeFile(root() / "logging.properties", "something longer");
    diagnostics.writeLoggingProperties("text\n", Halden::toUtf16(root().native()));
    EXPECT_EQ(readFile(root() / "logging.properties"), "text\n");
    EXPECT_NO_THROW(diagnostics.writeLoggingProperties("text\n", u"/nowhere/at/all"));
}

TEST_F(HaldenDiagnosticsTest, APipeInPlaceOfTheConfigurationIsNotWaitedFor) {
    ASSERT_EQ(mkfifo((root() / "logging.properties").c_str(), 0600), 0);
    ordinary().writeLoggingProperties("text\n", Halden::toUtf16(root().native()));
    EXPECT_TRUE(std::filesystem::is_fifo(root() / "logging.properties"));
}

TEST_F(HaldenDiagnosticsTest, NothingGoesFromDiskAtTheEnd) {
    makeDiagnostics().reset();
    ASSERT_EQ(runNames().size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(allRuns() / *runNames().begin() / "logs" / "DEFAULT.log"));
}

TEST_F(HaldenDiagnosticsTest, CrashRecordingMakesItsFolder) {
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    EXPECT_FALSE(diagnostics->isCrashRecordingInstalled());
    EXPECT_TRUE(diagnostics->installCrashRecording(true, 0));
    EXPECT_TRUE(diagnostics->isCrashRecordingInstalled());
    EXPECT_TRUE(std::filesystem::is_directory(Halden::toUtf8(diagnostics->getRunFolder()) + "/Crash"));
}

TEST_F(HaldenDiagnosticsTest, ASecondInstallIsRefusedAndChangesNothing) {
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    ASSERT_TRUE(diagnostics->installCrashRecording(true, 0));
    EXPECT_FALSE(diagnostics->installCrashRecording(true, 0));
    EXPECT_TRUE(diagnostics->isCrashRecordingInstalled());
    diagnostics->uninstallCrashRecording();
    EXPECT_FALSE(diagnostics->isCrashRecordingInstalled());
    EXPECT_TRUE(diagnostics->installCrashRecording(false, 0));
}

TEST_F(HaldenDiagnosticsTest, TheEndOfTheObjectEndsItsCrashRecording) {
    auto first = makeDiagnostics();
    auto second = makeDiagnostics();
    ASSERT_TRUE(first != nullptr && second != nullptr);
    ASSERT_TRUE(first->installCrashRecording(true, 0));
    EXPECT_FALSE(second->installCrashRecording(true, 0)); // one in a process
    first.reset();
    EXPECT_TRUE(second->installCrashRecording(true, 0));
}

TEST_F(HaldenDiagnosticsTest, AFileInPlaceOfTheCrashFolderThrows) {
    const auto diagnostics = makeDiagnostics();
    ASSERT_NE(diagnostics, nullptr);
    writeFile(Halden::toUtf8(diagnostics->getRunFolder()) + "/Crash", "");
    EXPECT_THROW(diagnostics->installCrashRecording(true, 0), std::filesystem::filesystem_error);
    EXPECT_FALSE(diagnostics->isCrashRecordingInstalled());
}

TEST_F(HaldenDiagnosticsTest, WithoutTheCrashFolderThereIsNoCrashRecording) {
    testing::NiceMock<MockFileSystem> fileSystem;
    HaldenDiagnostics diagnostics = ordinary(&fileSystem);
    std::filesystem::create_directories(appFolder());
    diagnostics.initializeLogging();
    EXPECT_CALL(fileSystem, create_directory(endsIn(u"/Crash"))).WillOnce(Return(true));
    EXPECT_FALSE(diagnostics.installCrashRecording(true, 0));
}

} // namespace
