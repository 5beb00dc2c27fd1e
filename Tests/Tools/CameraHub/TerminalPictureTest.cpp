#include "Tools/CameraHub/Picture/TerminalPicture.h"

#include "Tests/Tools/CameraHub/Pictures.h"
#include "Tools/Text/TerminalText.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <regex>
#include <span>
#include <sstream>

using namespace CommandLine;
using testing::HasSubstr;
using testing::Not;

namespace {

RgbPicture halfBlackHalfRed(int width, int height) {
    RgbPicture picture = uniform(width, height, 0);
    for (int y = 0; y < height; ++y)
        for (int x = width / 2; x < width; ++x)
            picture.samples[std::size_t{3} * (y * width + x)] = 255;
    return picture;
}

std::vector<std::string> linesWithoutColours(const std::string& text) {
    std::istringstream plain(std::regex_replace(text, std::regex("\x1b\\[[0-9;]*m"), ""));
    std::vector<std::string> lines;
    for (std::string line; std::getline(plain, line);)
        lines.push_back(line);
    return lines;
}

} // namespace

TEST(TerminalPictureTest, FillsTheWidthInItsProportions) {
    for (const int columns : {80, 200}) {
        const auto lines =
            linesWithoutColours(drawInTerminal(halfBlackHalfRed(1920, 1080), {columns, 100}, TerminalColours::True));
        EXPECT_NEAR(static_cast<double>(lines.size()), columns * 1080.0 / 1920 / 2, 1);
        for (const std::string& line : lines)
            EXPECT_EQ(displayWidth(line), columns);
    }
}

TEST(TerminalPictureTest, StaysWithinTheHeight) {
    const auto lines =
        linesWithoutColours(drawInTerminal(halfBlackHalfRed(100, 1000), {80, 20}, TerminalColours::True));
    EXPECT_EQ(lines.size(), 20U);
    EXPECT_LE(displayWidth(lines.front()), 5);
}

TEST(TerminalPictureTest, HasTheColoursThatTheTerminalHas) {
    const RgbPicture picture = halfBlackHalfRed(64, 48);
    EXPECT_THAT(drawInTerminal(picture, {}, TerminalColours::True), HasSubstr("8;2;255;0;0"));
    EXPECT_THAT(drawInTerminal(picture, {}, TerminalColours::TwoHundredFiftySix), HasSubstr("8;5;196"));
    EXPECT_THAT(drawInTerminal(picture, {}, TerminalColours::TwoHundredFiftySix), Not(HasSubstr("8;2;")));
    EXPECT_THAT(drawInTerminal(picture, {}, TerminalColours::Eight), Not(HasSubstr("8;5;")));
    EXPECT_THAT(drawInTerminal(picture, {}, TerminalColours::None), Not(HasSubstr("\x1b")));
}

TEST(TerminalPictureTest, LeavesTheColoursAsTheyWere) {
    const std::string text = drawInTerminal(halfBlackHalfRed(64, 48), {}, TerminalColours::True);
    EXPECT_THAT(text, testing::EndsWith("\x1b[0m\n"));
}

TEST(TerminalPictureTest, ShowsThePictureInTheTerminalsOwnColoursWhereThereAreNoOthers) {
    RgbPicture picture = uniform(64, 48, 0);
    std::ranges::fill(std::span(picture.samples).last(picture.samples.size() / 2), std::uint8_t{255});
    const auto lines = linesWithoutColours(drawInTerminal(picture, {}, TerminalColours::None));
    EXPECT_THAT(lines.front(), testing::MatchesRegex(" +"));
    EXPECT_THAT(lines.back(), Not(HasSubstr(" ")));
}

TEST(TerminalPictureTest, OnePixelIsDrawnToo) {
    EXPECT_FALSE(drawInTerminal(uniform(1, 1, 9), {1, 1}, TerminalColours::True).empty());
}
