#include "Framework/CXX/Diagnostics/RunFolderEntry.h"

#include "Tests/Support/Growth.h"
#include "Tests/Support/ScopedEnvironment.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

class RunFolderEntryTest : public testing::Test {
protected:
    RunFolderEntryTest() { tzset(); }

private:
    ScopedEnvironment _zone{"TZ", "EST5"}; // five hours behind UTC all the year
};

constexpr std::int64_t someTime = 1'794'627'199; // 2026-11-13 22:33:19 there

TEST_F(RunFolderEntryTest, TheNameOfATimeIsLocal) {
    const RunFolderEntry entry = RunFolderEntry::ofStartTime(someTime);
    EXPECT_EQ(entry.name, u"2026-11-13_22-33-19");
    EXPECT_EQ(entry.startTime, someTime);
    EXPECT_TRUE(entry.hasTime);
}

TEST_F(RunFolderEntryTest, NumbersHaveLeadingZeros) {
    EXPECT_EQ(RunFolderEntry::ofStartTime(5 * 3600 + 61).name, u"1970-01-01_00-01-01");
}

TEST_F(RunFolderEntryTest, TheNameTellsTheTimeAgain) {
    EXPECT_EQ(timeOfRunFolderName(u"2026-11-13_22-33-19"), someTime);
    EXPECT_EQ(RunFolderEntry::ofName(u"2026-11-13_22-33-19").startTime, someTime);
}

TEST_F(RunFolderEntryTest, ACandidateHas11To19UnitsAndADash) {
    EXPECT_TRUE(looksLikeRunFolder(u"2026-1-3_2-3-1"));
    EXPECT_TRUE(looksLikeRunFolder(u"2026-1-3_2-")); // 11
    EXPECT_FALSE(looksLikeRunFolder(u"2026-11-13")); // 10
    EXPECT_TRUE(looksLikeRunFolder(u"2026-11-13_22-33-19"));
    EXPECT_FALSE(looksLikeRunFolder(u"2026-11-13_22-33-190")); // 20
    EXPECT_FALSE(looksLikeRunFolder(u"20261113_223319"));
    EXPECT_FALSE(looksLikeRunFolder(u""));
}

TEST_F(RunFolderEntryTest, ANameWithoutATimeIsNoRun) {
    for (const char16_t* const name :
         {u"old-logs-folder", u"2026-11-13-22-33-19", u"2026-11-13_223319", u"----_-------", u"0000-00-00_00-00-00",
          u"1969-12-30_00-00-00", u"2026-1113_22_33_19"}) {
        EXPECT_FALSE(RunFolderEntry::ofName(name).hasTime);
    }
}

TEST_F(RunFolderEntryTest, TheSecondMayBeMissing) {
    EXPECT_EQ(timeOfRunFolderName(u"2026-11-13_22-33"), someTime - 19);
    EXPECT_TRUE(RunFolderEntry::ofName(u"2026-1-3_2-3").hasTime);
}

TEST_F(RunFolderEntryTest, NumbersEndAtTheFirstOtherCharacter) {
    EXPECT_EQ(timeOfRunFolderName(u"2026-11x-13 _22h-33m-19s"), someTime);
}

TEST_F(RunFolderEntryTest, TheYearIsInTheFirstFourCharacters) {
    EXPECT_EQ(timeOfRunFolderName(u"20269-11-13_22-33-19"), someTime);
}

TEST_F(RunFolderEntryTest, FieldsOverflowIntoTheNext) {
    EXPECT_EQ(timeOfRunFolderName(u"2026-11-12_46-33-19"), someTime);
}

TEST_F(RunFolderEntryTest, NumbersBeyondAllBoundsAreNoError) {
    EXPECT_FALSE(RunFolderEntry::ofName(u"2026-99999999999_1-").hasTime);
    EXPECT_FALSE(RunFolderEntry::ofName(u"9999-01-01_00-00-00").hasTime);
    EXPECT_TRUE(RunFolderEntry::ofName(u"3000-01-01_00-00-00").hasTime);
}

TEST_F(RunFolderEntryTest, TheTimeForANameGrowsAsItDoes) {
    for (const char16_t letter : {u'1', u'-', u'_', u'x'}) {
        const double times = growth([letter](std::size_t bytes) {
            return [name = u"2026-11-13_22-" + std::u16string(bytes, letter)] {
                timeOfRunFolderName(name);
                RunFolderEntry::ofName(name);
            };
        });
        EXPECT_LT(times, linearGrowth) << static_cast<int>(letter);
    }
}

} // namespace
