#include "Tools/Text/Table.h"

#include "Tools/Text/TerminalText.h"

#include <gtest/gtest.h>

using namespace CommandLine;

namespace {

Table table() {
    Table made({{"No.", true}, {"Model", false, true}, {"Size", true}, {"Uid", false, true}});
    made.add({"1", "Desk Camera", "640x480", "usb-desk-camera"});
    made.add({"10", "\u76f8\u6a5f", "1920x1080", ""});
    return made;
}

} // namespace

TEST(TableTest, ColumnsAreAsWideAsTheirWidestText) {
    EXPECT_EQ(table().text(std::nullopt), "No.  Model             Size  Uid\n"
                                          "  1  Desk Camera    640x480  usb-desk-camera\n"
                                          " 10  \u76f8\u6a5f         1920x1080\n");
}

TEST(TableTest, AWideTerminalChangesNothing) { EXPECT_EQ(table().text(44), table().text(std::nullopt)); }

TEST(TableTest, InANarrowTerminalTheWidestColumnsAreShortenedFirst) {
    EXPECT_EQ(table().text(39), "No.  Model            Size  Uid\n"
                                "  1  Desk Came\u2026    640x480  usb-desk-c\u2026\n"
                                " 10  \u76f8\u6a5f        1920x1080\n");
}

TEST(TableTest, NoColumnIsShortenedToLessThanEightCharacters) {
    EXPECT_EQ(table().text(10), table().text(34));
    EXPECT_EQ(table().text(34), "No.  Model          Size  Uid\n"
                                "  1  Desk Ca\u2026    640x480  usb-des\u2026\n"
                                " 10  \u76f8\u6a5f      1920x1080\n");
}
