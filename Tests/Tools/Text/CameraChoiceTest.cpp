#include "Tools/Text/CameraChoice.h"

#include <gmock/gmock.h>

using namespace CommandLine;
using CameraHub::Camera;

namespace {

Camera camera(const std::string& uid, const std::string& make, const std::string& model) {
    Camera made;
    made.uid = uid;
    made.make = make;
    made.model = model;
    return made;
}

const std::vector<Camera> cameras = {camera("bench", "Halden", "Desk Camera"), camera("3", "Halden", "Ceiling Camera"),
                                     camera("yard", "", "")};

std::string failureOf(const std::vector<Camera>& among, const std::string& wanted) {
    try {
        return "chose " + chooseCamera(among, wanted).uid;
    } catch (const NoSuchCamera& error) {
        return error.what();
    }
}

} // namespace

TEST(CameraChoiceTest, AUidGoesBeforeANumber) {
    EXPECT_EQ(chooseCamera(cameras, "3").uid, "3");
    EXPECT_EQ(chooseCamera(cameras, "1").uid, "bench");
    EXPECT_EQ(chooseCamera(cameras, "2").uid, "3");
}

TEST(CameraChoiceTest, APartOfANameIsEnoughInSmallOrCapitalLetters) {
    EXPECT_EQ(chooseCamera(cameras, "desk").uid, "bench");
    EXPECT_EQ(chooseCamera(cameras, "HALDEN CEIL").uid, "3");
    EXPECT_EQ(chooseCamera(cameras, "ard").uid, "yard");
}

TEST(CameraChoiceTest, WithoutAWishTheFirstIsTaken) { EXPECT_EQ(chooseCamera(cameras, "").uid, "bench"); }

TEST(CameraChoiceTest, SeveralThatFitAreListed) {
    EXPECT_EQ(failureOf(cameras, "halden"), "\"halden\" fits several cameras, give one by its number or uid: "
                                            "1 Halden Desk Camera (bench), 2 Halden Ceiling Camera (3)");
}

TEST(CameraChoiceTest, IfNoneFitsAllAreListed) {
    for (const char* wanted : {"nobody", "0", "4", "1.0", "-1", "99999999999999999999999"})
        EXPECT_EQ(failureOf(cameras, wanted),
                  "no camera is called \"" + std::string(wanted) +
                      "\", there are: 1 Halden Desk Camera (bench), 2 Halden Ceiling Camera (3), 3 yard (yard)");
}

TEST(CameraChoiceTest, AHubWithoutCamerasIsToldAsSuch) {
    EXPECT_THAT(failureOf({}, "desk"), testing::StartsWith("the hub has no camera;"));
}

TEST(CameraChoiceTest, AFailureIsOneLineWhateverNamesThereAre) {
    EXPECT_EQ(failureOf({camera("a\nb", "c\x1b[2J", "")}, "x\n"),
              "no camera is called \"x\ufffd\", there are: 1 c\ufffd[2J (a\ufffdb)");
}
