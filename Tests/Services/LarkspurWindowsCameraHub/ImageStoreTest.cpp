#include "Platform/Imaging/ImageDecoder.h"
#include "Services/LarkspurWindowsCameraHub/CameraServer.h"
#include "Tests/Services/LarkspurWindowsCameraHub/OneCamera.h"

#include <regex>

namespace {

/// The images that a CameraServer keeps.
class ImageStoreTest : public ServedCameras {
protected:
    std::string capture(const std::shared_ptr<ConnectedCamera>& camera) {
        return server->captureImage(camera, 50000, 0.0, 0, 0).imageId;
    }
};

TEST_F(ImageStoreTest, AnImageIdIsTheTextOfANewIdentifier) {
    startOne();
    const auto camera = server->getCamera("D");
    const std::regex pattern("[0-9a-f]{8}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{4}-[0-9a-f]{12}");
    const std::string first = capture(camera);
    const std::string second = capture(camera);
    EXPECT_TRUE(std::regex_match(first, pattern)) << first;
    EXPECT_TRUE(std::regex_match(second, pattern)) << second;
    EXPECT_NE(first, second);
}

TEST_F(ImageStoreTest, AnImageIsReadAgainAndAgain) {
    startOne();
    const std::string id = capture(server->getCamera("D"));
    const auto image = server->getImage(id);
    EXPECT_EQ(Platform::Imaging::decodeImageSize(image).width, 32u);
    EXPECT_EQ(server->getImage(id), image);
    EXPECT_TRUE(server->getImage("").empty());
    EXPECT_TRUE(server->getImage("{" + id + "}").empty());
}

TEST_F(ImageStoreTest, AnImageIsSharedNotCopiedAndStaysWithThoseThatShareIt) {
    startOne();
    const auto camera = server->getCamera("D");
    const std::string id = capture(camera);
    const auto image = server->shareImage(id);
    ASSERT_NE(image, nullptr);
    const auto before = server->getImage(id);
    EXPECT_EQ(*image, before);
    EXPECT_EQ(server->shareImage(id), image);
    EXPECT_EQ(server->shareImage(""), nullptr);
    capture(camera);
    EXPECT_EQ(server->shareImage(id), nullptr);
    EXPECT_EQ(image.use_count(), 1);
    EXPECT_EQ(*image, before);
}

TEST_F(ImageStoreTest, OnlyTheLatestImageIsKeptWhicheverCameraTookIt) {
    start(severalCameras({"D", "E"}, olderExposure()), 2);
    const auto first = server->getCamera("D");
    const auto second = server->getCamera("E");
    const std::string ofFirst = capture(first);
    EXPECT_FALSE(server->getImage(ofFirst).empty());
    const std::string ofSecond = capture(second);
    EXPECT_TRUE(server->getImage(ofFirst).empty());
    EXPECT_FALSE(server->getImage(ofSecond).empty());
    const std::string again = capture(second);
    EXPECT_TRUE(server->getImage(ofSecond).empty());
    EXPECT_FALSE(server->getImage(again).empty());
}

} // namespace
