#include "Framework/CXX/Diagnostics/DiagnosticsFolders.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

TEST(DiagnosticsFoldersTest, AreDerivedFromTheRunFolder) {
    const DiagnosticsFolders folders = DiagnosticsFolders::ofRunFolder(u"/data/app/Diagnostics/2026-11-13_22-33-19");
    EXPECT_EQ(folders.baseFolder, u"/data/app");
    EXPECT_EQ(folders.diagnosticsFolder, u"/data/app/Diagnostics");
    EXPECT_EQ(folders.runFolder, u"/data/app/Diagnostics/2026-11-13_22-33-19");
    EXPECT_EQ(folders.runName, u"2026-11-13_22-33-19");
    EXPECT_EQ(folders.logFolder, u"/data/app/Diagnostics/2026-11-13_22-33-19/logs");
    EXPECT_EQ(folders.tracesFolder, u"/data/app/Diagnostics/2026-11-13_22-33-19/Traces");
    EXPECT_EQ(folders.currentDataFolder, u"");
    EXPECT_EQ(folders.currentTraceId, "");
    EXPECT_EQ(folders.defaultTraceId, "");
    EXPECT_EQ(folders.crashFolder, u"");
}

TEST(DiagnosticsFoldersTest, WithoutTheWordOnlyTheRunFolderIsFilled) {
    const DiagnosticsFolders folders = DiagnosticsFolders::ofRunFolder(u"/data/diagnostics/run");
    EXPECT_EQ(folders.runFolder, u"/data/diagnostics/run");
    EXPECT_EQ(folders.baseFolder, u"");
    EXPECT_EQ(folders.diagnosticsFolder, u"");
    EXPECT_EQ(folders.logFolder, u"");
}

TEST(DiagnosticsFoldersTest, TheFirstOccurrenceOfTheWordCounts) {
    const DiagnosticsFolders folders = DiagnosticsFolders::ofRunFolder(u"/MyDiagnosticsOf/x/Diagnostics/run");
    EXPECT_EQ(folders.diagnosticsFolder, u"/MyDiagnostics");
    EXPECT_EQ(folders.runName, u"f/x/Diagnostics/run");
    EXPECT_EQ(folders.baseFolder, u"");
}

TEST(DiagnosticsFoldersTest, APathThatEndsInTheWordIsImpossible) {
    EXPECT_THROW(DiagnosticsFolders::ofRunFolder(u"/data/Diagnostics"), std::out_of_range);
}

TEST(DiagnosticsFoldersTest, TheRunNameMayBeEmpty) {
    const DiagnosticsFolders folders = DiagnosticsFolders::ofRunFolder(u"/data/Diagnostics/");
    EXPECT_EQ(folders.runName, u"");
    EXPECT_EQ(folders.baseFolder, u"/data");
}

TEST(DiagnosticsFoldersTest, ABackslashSeparatesWhereThereIsNoSlash) {
    EXPECT_EQ(DiagnosticsFolders::ofRunFolder(u"C:\\data\\Diagnostics\\run").baseFolder, u"C:\\data");
}

TEST(DiagnosticsFoldersTest, WithoutASeparatorThereIsNoBase) {
    const DiagnosticsFolders folders = DiagnosticsFolders::ofRunFolder(u"Diagnostics/run");
    EXPECT_EQ(folders.baseFolder, u"");
    EXPECT_EQ(folders.diagnosticsFolder, u"Diagnostics");
    EXPECT_EQ(folders.runName, u"run");
    EXPECT_EQ(folders.logFolder, u"");
}

} // namespace
