#include "Services/CameraTestDriver/Images.h"

#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Simulated/Picture/TestChart.h"
#include "Tests/Services/CameraTestDriver/DriverFixture.h"

namespace {

using std::chrono::milliseconds;

class ImagesTest : public DriverFixture {
protected:
    TypedConsole console;
};

TEST_F(ImagesTest, AnIdIsLowerCaseHexadecimalInBraces) {
    EXPECT_EQ(imageIdToText({0x0F8FAD5B, 0xD9CB, 0x046F, {0xA1, 0x65, 0x70, 0x86, 0x77, 0x28, 0x95, 0x0E}}),
              "{0f8fad5b-d9cb-046f-a165-70867728950e}");
}

TEST_F(ImagesTest, ATakenPictureIsKeptDecodedUnderTheTextOfItsId) {
    useCamera("{}", 320, 240);
    auto connection = connectionTo("cam");
    const auto id = captureImage(console, connection);
    EXPECT_EQ(console.text(), "");
    ASSERT_EQ(connection.images.count(imageIdToText(id)), 1U);
    const auto& picture = connection.images.at(imageIdToText(id));
    EXPECT_EQ(picture->PixelWidth, 320U);
    EXPECT_EQ(picture->PixelHeight, 240U);
    EXPECT_EQ(picture->Pixels.size(), 320U * 240U * 4U);
}

TEST_F(ImagesTest, EveryPictureHasAnIdOfItsOwn) {
    useCamera("{}");
    auto connection = connectionTo("cam");
    EXPECT_NE(captureImage(console, connection), captureImage(console, connection));
    EXPECT_EQ(connection.images.size(), 2U);
}

TEST_F(ImagesTest, AFailedCaptureIsToldAndGivesAnIdWithoutAPictureAfterAPause) {
    useCamera(R"({"faults": {"MediaCapture.CapturePhotoToStreamAsync": {"message": "No light é.", "code": -9}}})");
    auto connection = connectionTo("cam");
    const auto id = captureImage(console, connection);
    EXPECT_EQ(console.text(), "No light é. -9\n");
    EXPECT_NE(id, Platform::Guid());
    EXPECT_TRUE(connection.images.empty());
    EXPECT_EQ(clock().sleeps(), std::vector{milliseconds(100)});
}

TEST_F(ImagesTest, ACaptureThatEndsWithAnErrorIsAFailedOne) {
    useCamera(R"({"capture": {"outcome": "error"}})");
    auto connection = connectionTo("cam");
    captureImage(console, connection);
    EXPECT_TRUE(connection.images.empty());
    EXPECT_NE(console.text(), "");
    EXPECT_EQ(clock().sleeps(), std::vector{milliseconds(100)});
}

TEST_F(ImagesTest, ACaptureThatWasNeverOpenedFailsTheSameWay) {
    useCamera("{}");
    auto connection = connectionTo("no such camera");
    captureImage(console, connection);
    EXPECT_NE(console.text(), "");
    EXPECT_TRUE(connection.images.empty());
}

TEST_F(ImagesTest, APictureIsReturnedWithALine) {
    useCamera("{}");
    auto connection = connectionTo("cam");
    const auto id = captureImage(console, connection);
    EXPECT_EQ(getImage(console, connection, id), connection.images.at(imageIdToText(id)));
    EXPECT_EQ(console.text(), "Returning image " + imageIdToText(id) + "\n");
}

TEST_F(ImagesTest, APictureThatTheCameraDoesNotHaveIsNull) {
    const DriverConnection connection;
    const Platform::Guid id{1, 2, 3, {}};
    EXPECT_EQ(getImage(console, connection, id), nullptr);
    EXPECT_EQ(console.text(), "This camera does not have image {00000001-0002-0003-0000-000000000000}\n");
}

TEST_F(ImagesTest, DeletingLeavesAPictureWhereItIs) {
    useCamera("{}");
    auto connection = connectionTo("cam");
    const auto id = captureImage(console, connection);
    deleteImage(console, connection, id);
    EXPECT_EQ(console.text(), "");
    EXPECT_EQ(connection.images.size(), 1U);
}

TEST_F(ImagesTest, DeletingForgetsACaptureUnderWay) {
    DriverConnection connection;
    const Platform::Guid id{1, 2, 3, {}};
    connection.pendingImages.emplace(imageIdToText(id), Platform::AsyncOperationSource<void>().operation());
    deleteImage(console, connection, id);
    EXPECT_EQ(console.text(), "Deleting image {00000001-0002-0003-0000-000000000000}\n");
    EXPECT_TRUE(connection.pendingImages.empty());
}

} // namespace
