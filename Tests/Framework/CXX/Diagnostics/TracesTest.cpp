#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/HaldenDiagnostics.h"
#include "Tests/Framework/CXX/Diagnostics/DiagnosticsFixture.h"

#include <gmock/gmock.h>

namespace {

class TracesTest : public DiagnosticsFixture {
protected:
    std::string traces() const { return Halden::toUtf8(diagnostics->getTracesFolder()); }

    std::unique_ptr<HaldenDiagnostics> diagnostics = makeDiagnostics();
};

TEST_F(TracesTest, TheIdIsTheNameAndTheLocalTime) {
    const ScopedEnvironment zone("TZ", "EST5");
    tzset();
    const std::string id = diagnostics->createTrace("name");
    EXPECT_THAT(id, testing::MatchesRegex("name_[0-9]{4}(-[0-9]{2}){2}_([0-9]{2}-){3}0500"));
}

TEST_F(TracesTest, ColonsAndAsterisksBecomeDashes) {
    const std::string id = diagnostics->createTrace("a:b*c");
    EXPECT_TRUE(id.starts_with("a-b-c_")) << id;
    EXPECT_EQ(id.find_first_of(":*"), std::string::npos) << id;
}

TEST_F(TracesTest, HaveADataFolder) {
    const std::string id = diagnostics->createTrace("K\xC3\xA4se");
    EXPECT_TRUE(std::filesystem::is_directory(traces() + "/" + id + "/Data"));
    EXPECT_EQ(diagnostics->getDataFolder(id), traces() + "/" + id + "/Data");
    EXPECT_EQ(Halden::toUtf8(diagnostics->getTraceFolder(id)), traces() + "/" + id);
}

TEST_F(TracesTest, ANewTraceIsNotTheCurrentOne) {
    const std::string current = diagnostics->getCurrentTraceId();
    diagnostics->createTrace("other");
    EXPECT_EQ(diagnostics->getCurrentTraceId(), current);
    EXPECT_EQ(current, diagnostics->getDefaultTraceId());
}

TEST_F(TracesTest, TheCurrentTraceCanBeSet) {
    const std::string id = diagnostics->createTrace("other");
    diagnostics->setCurrentTrace(id);
    EXPECT_EQ(diagnostics->getCurrentTraceId(), id);
    EXPECT_EQ(Halden::toUtf8(diagnostics->getCurrentTraceFolder()), traces() + "/" + id);
    EXPECT_EQ(Halden::toUtf8(diagnostics->getCurrentDataFolder()), traces() + "/" + id + "/Data");
    EXPECT_NE(diagnostics->getDefaultTraceId(), id);
}

TEST_F(TracesTest, SubfoldersAreMade) {
    const std::string id = diagnostics->createTrace("other");
    diagnostics->setCurrentTrace(id);
    EXPECT_EQ(Halden::toUtf8(diagnostics->createCurrentDataSubfolder(u"sub")), traces() + "/" + id + "/Data/sub");
    EXPECT_TRUE(std::filesystem::is_directory(traces() + "/" + id + "/Data/sub"));
    EXPECT_EQ(Halden::toUtf8(diagnostics->createTraceSubfolder(id, u"sub")), traces() + "/" + id + "/sub");
    EXPECT_TRUE(std::filesystem::is_directory(traces() + "/" + id + "/sub"));
    EXPECT_THROW(diagnostics->createTraceSubfolder("missing", u"sub"), std::filesystem::filesystem_error);
}

TEST_F(TracesTest, AnAbsoluteSubfolderReplacesTheFoldersBefore) {
    const std::u16string folder = Halden::toUtf16((root() / "elsewhere").native());
    EXPECT_EQ(diagnostics->createCurrentDataSubfolder(folder), folder);
    EXPECT_TRUE(std::filesystem::is_directory(root() / "elsewhere"));
}

TEST_F(TracesTest, WithoutTheirFolderATraceIsTheFileSystemsError) {
    std::filesystem::remove_all(traces());
    EXPECT_THROW(diagnostics->createTrace("name"), std::filesystem::filesystem_error);
}

TEST_F(TracesTest, TheDataFolderNeedsOnlyTheFolderOfTheTraces) {
    std::filesystem::remove_all(Halden::toUtf8(diagnostics->getLogFolder()));
    ASSERT_FALSE(diagnostics->isValid());
    EXPECT_TRUE(diagnostics->getDataFolder("id").native().ends_with("/Traces/id/Data"));
    EXPECT_NO_THROW(diagnostics->setCurrentTrace("id"));
}

TEST_F(TracesTest, AnIdIsFormattedBehindItsName) { EXPECT_EQ(formatTraceId("x"), "TraceId: x"); }

} // namespace
