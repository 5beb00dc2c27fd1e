#include "Tools/CameraHub/Commands/Arguments.h"

#include "Tools/CameraHub/Terminal/ExitCode.h"

#include <gmock/gmock.h>

#include <initializer_list>
#include <vector>

using namespace CommandLine;
using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Optional;

namespace {

Arguments parsed(std::initializer_list<const char*> texts) {
    std::vector<const char*> all = {"camera-hub"};
    all.insert(all.end(), texts);
    return parseArguments(static_cast<int>(all.size()), all.data()).value();
}

template <typename Options> Options optionsOf(std::initializer_list<const char*> texts) {
    return std::get<Options>(parsed(texts).command);
}

std::string failureOf(std::initializer_list<const char*> texts) {
    try {
        parsed(texts);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), ExitCode::Usage);
        return failure.what();
    }
    return "no failure";
}

} // namespace

TEST(ArgumentsTest, EachCommandGivesItsOptions) {
    EXPECT_FALSE(optionsOf<ListOptions>({"list"}).isWatching);
    EXPECT_TRUE(optionsOf<ListOptions>({"list", "-w"}).isWatching);
    EXPECT_NO_THROW(optionsOf<VersionOptions>({"version"}));
    EXPECT_EQ(optionsOf<FindOptions>({"find", "--timeout", "2s"}).timeout, 2s);
    EXPECT_EQ(optionsOf<HealthOptions>({"health", "--timeout", "2min"}).timeout, 2min);
    EXPECT_EQ(optionsOf<DiagnosticsOptions>({"diagnostics", "--to", "/a/Diagnostics"}).folder, "/a/Diagnostics");
    const auto bracket = optionsOf<BracketOptions>({"bracket", "--from", "1ms", "--to", "1/2s", "-o", "x"});
    EXPECT_EQ(bracket.from, 1ms);
    EXPECT_EQ(bracket.to, 500ms);
    EXPECT_EQ(bracket.output, "x");
}

TEST(ArgumentsTest, OfACaptureAreReadAsPeopleWriteThem) {
    const auto options = optionsOf<CaptureOptions>({"capture", "--camera", "desk", "--exposure", "1/50s", "--settle",
                                                    "1s", "-o", "-", "--count", "3", "--every", "10s", "--show"});
    EXPECT_EQ(options.camera, "desk");
    EXPECT_THAT(options.exposure, Optional(20000us));
    EXPECT_EQ(options.percent, std::nullopt);
    EXPECT_EQ(options.settle, 1s);
    EXPECT_EQ(options.output, "-");
    EXPECT_EQ(options.count, 3);
    EXPECT_EQ(options.every, 10s);
    EXPECT_TRUE(options.isShown);
    EXPECT_THAT(optionsOf<CaptureOptions>({"capture", "-p", "0"}).percent, Optional(0));
}

TEST(ArgumentsTest, OfAllCommandsStandBeforeOrBehindTheCommand) {
    for (const Arguments& arguments :
         {parsed({"--host", "lab", "--port", "1", "--image-port", "2", "--json", "-q", "list"}),
          parsed({"list", "--host", "lab", "--port", "1", "--image-port", "2", "--json", "-q"})}) {
        EXPECT_EQ(arguments.global.address.host, "lab");
        EXPECT_EQ(arguments.global.address.messagePort, 1);
        EXPECT_EQ(arguments.global.address.imagePort, 2);
        EXPECT_TRUE(arguments.global.isJson);
        EXPECT_TRUE(arguments.global.isQuiet);
    }
}

TEST(ArgumentsTest, ThatAreWrongAreToldInOneLineThatNamesTheHelp) {
    EXPECT_EQ(failureOf({}), "no command is given; see: camera-hub --help");
    EXPECT_EQ(failureOf({"nope"}), "there is no command nope; see: camera-hub --help");
    EXPECT_EQ(failureOf({"capture", "-e", "5"}), "--exposure: \"5\" is no exposure, such as 20ms, 1/50s or 20000us; "
                                                 "see: camera-hub capture --help");
    EXPECT_EQ(failureOf({"bracket", "--from", "1ms"}), "--to is required; see: camera-hub bracket --help");
    EXPECT_THAT(failureOf({"capture", "-e", "5ms", "-p", "5"}), HasSubstr("excludes"));
    EXPECT_THAT(failureOf({"capture", "--nope"}), HasSubstr("--nope"));
    EXPECT_THAT(failureOf({"capture", "rest"}), HasSubstr("rest"));
}

TEST(ArgumentsTest, OutsideOfTheirRangesAreWrong) {
    EXPECT_THAT(failureOf({"capture", "-p", "101"}), HasSubstr("--percent"));
    EXPECT_THAT(failureOf({"capture", "-p", "-1"}), HasSubstr("--percent"));
    EXPECT_THAT(failureOf({"capture", "-n", "0"}), HasSubstr("--count"));
    EXPECT_THAT(failureOf({"capture", "--settle", "61s"}), HasSubstr("--settle: from 0 ms to 1 min"));
    EXPECT_THAT(failureOf({"health", "--timeout", "0"}), HasSubstr("--timeout: from 1 ms to 1440 min"));
    EXPECT_THAT(failureOf({"list", "--port", "0"}), HasSubstr("--port"));
    EXPECT_THAT(failureOf({"list", "--port", "65536"}), HasSubstr("--port"));
}

TEST(ArgumentsTest, ThatWantStandardOutputForTwoThingsContradictEachOther) {
    CaptureOptions options;
    EXPECT_NO_THROW(checkOptions(options, true));
    options.isShown = true;
    EXPECT_NO_THROW(checkOptions(options, false));
    EXPECT_THROW(checkOptions(options, true), Failure);
    options.output = "-";
    EXPECT_THROW(checkOptions(options, false), Failure);
    options.isShown = false;
    EXPECT_THROW(checkOptions(options, true), Failure);
    options.count = 2;
    EXPECT_THROW(checkOptions(options, false), Failure);
}
