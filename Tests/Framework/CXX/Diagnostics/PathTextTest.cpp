#include "Framework/CXX/Diagnostics/PathText.h"

#include <gtest/gtest.h>

namespace {

using Halden::joinPaths;

TEST(PathTextTest, JoinsWithOneSeparator) {
    EXPECT_EQ(joinPaths(u"a", u"b"), u"a/b");
    EXPECT_EQ(joinPaths(u"a/", u"b"), u"a/b");
    EXPECT_EQ(joinPaths(u"/", u"b"), u"/b");
    EXPECT_EQ(joinPaths(u"", u"b"), u"b");
}

TEST(PathTextTest, AnAbsoluteRightSideReplacesTheLeftSide) { EXPECT_EQ(joinPaths(u"/a/b", u"/c"), u"/c"); }

TEST(PathTextTest, NoPathIsCut) {
    const std::u16string part(5000, u'x');
    EXPECT_EQ(joinPaths(part, part).size(), 10001U);
}

TEST(PathTextTest, RemovesEveryBlank) {
    EXPECT_EQ(Halden::withoutBlanks(u" a  b c "), u"abc");
    EXPECT_EQ(Halden::withoutBlanks("a\tb c"), "a\tbc");
}

} // namespace
