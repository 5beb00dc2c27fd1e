#include "Services/CameraTestDriver/SavePicture.h"

#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Simulated/Picture/ChartLayout.h"
#include "Services/CameraTestDriver/Images.h"
#include "Services/CameraTestDriver/OutputFolder.h"
#include "Tests/Services/CameraTestDriver/DriverFixture.h"

#include <fstream>
#include <iterator>

namespace {

using Texts = std::vector<std::string>;
using Platform::Imaging::RgbImage;

class SavePictureTest : public DriverFixture {
protected:
    SavePictureTest() { useScenario(R"("groups": [)" + cameraGroup("cam", cameraName(), 320, 240) + "]"); }

    std::string take() {
        TypedConsole console;
        imageIds().push_back(captureImage(console, connection));
        return imageIdToText(imageIds().back());
    }

    /// What saving says when a person types that.
    std::string save(const std::string& typed) {
        TypedConsole console(typed);
        const auto folder = openOutputFolder(console, connection.camera.name);
        try {
            savePicture(console, connection, folder);
        } catch (const winrt::hresult_error& error) {
            raised = error.code();
        }
        return plain(console.text());
    }

    RgbImage saved(const std::string& name) const {
        std::ifstream file(outputFolder() / name, std::ios::binary);
        const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
        return Platform::Imaging::decodeImage(bytes);
    }

    DriverConnection& connect() {
        connection = connectionTo("cam", cameraName());
        return connection;
    }

    DriverConnection connection;
    winrt::hresult raised = winrt::result::ok;
};

TEST_F(SavePictureTest, TheFileIsNamedAfterTheCounterAndTheId) {
    connect();
    const std::string id = take();
    EXPECT_EQ(save("1\n"), "Save an image..\n"
                           "Which?> \n"
                           "Returning image {1}\n"
                           "Saved image to:\n"
                           " FOLDER/Test Camera/0-{1}.png\n");
    EXPECT_EQ(filesIn(outputFolder()), Texts{"0-" + id + ".png"});
    EXPECT_TRUE(imageIds().empty());
    EXPECT_EQ(connection.images.size(), 1U) << "the picture itself stays in memory";
}

TEST_F(SavePictureTest, TheThirdSaveHasTheNumber2) {
    connect();
    for (const char* typed : {"1", "1", "1"}) {
        take();
        save(typed);
    }
    const auto files = filesIn(outputFolder());
    ASSERT_EQ(files.size(), 3U);
    EXPECT_EQ(files[2].substr(0, 3), "2-{");
    EXPECT_EQ(connection.saveCounter, 3);
}

TEST_F(SavePictureTest, SavingTheFirstOfTwoMakesTheSecondOneNumber1) {
    connect();
    take();
    const std::string second = take();
    save("1");
    EXPECT_EQ(imageIds().size(), 1U);
    save("1");
    EXPECT_EQ(filesIn(outputFolder()).back(), "1-" + second + ".png");
}

TEST_F(SavePictureTest, NumbersBeginAt1AndEndWithTheList) {
    connect();
    take();
    EXPECT_EQ(save("0"), "Save an image..\nWhich?> \nWe don't have image 0\n");
    EXPECT_EQ(save("2"), "Save an image..\nWhich?> \nWe don't have image 2\n");
    EXPECT_EQ(save("-1"), "Save an image..\nWhich?> \nWe don't have image -1\n");
    EXPECT_EQ(filesIn(outputFolder()), Texts{});
    EXPECT_EQ(imageIds().size(), 1U);
    EXPECT_EQ(connection.saveCounter, 0);
}

TEST_F(SavePictureTest, TheFileDecodesToThePictureThatWasTaken) {
    connect();
    const std::string id = take();
    const auto& taken = *connection.images.at(id);
    save("1");
    const RgbImage picture = saved("0-" + id + ".png");
    ASSERT_EQ(picture.width, 320U);
    ASSERT_EQ(picture.height, 240U);
    ASSERT_EQ(taken.Format, Platform::BitmapPixelFormat::Bgra8);
    for (std::size_t i = 0; i < std::size_t{320} * 240; ++i) {
        ASSERT_EQ(picture.pixels[3 * i], taken.Pixels[4 * i + 2]) << "red of pixel " << i;
        ASSERT_EQ(picture.pixels[3 * i + 1], taken.Pixels[4 * i + 1]) << "green of pixel " << i;
        ASSERT_EQ(picture.pixels[3 * i + 2], taken.Pixels[4 * i]) << "blue of pixel " << i;
    }
}

TEST_F(SavePictureTest, TheColoursOfTheTestChartAreInTheFile) {
    connect();
    const std::string id = take();
    save("1");
    const RgbImage picture = saved("0-" + id + ".png");
    const auto patches = Platform::Simulated::chartPatches(320, 240);
    ASSERT_GE(patches.size(), 40U);
    for (const auto& [area, colour] : patches) {
        const auto x = static_cast<std::size_t>(area.x) + area.width / 2;
        const auto y = static_cast<std::size_t>(area.y) + area.height / 2;
        const std::uint8_t* pixel = &picture.pixels[3 * (y * 320 + x)];
        EXPECT_EQ(pixel[0], colour.red) << "at " << x << ", " << y;
        EXPECT_EQ(pixel[1], colour.green) << "at " << x << ", " << y;
        EXPECT_EQ(pixel[2], colour.blue) << "at " << x << ", " << y;
    }
}

TEST_F(SavePictureTest, ATakenNameGetsANumber) {
    connect();
    const std::string id = take();
    std::filesystem::create_directories(outputFolder());
    std::ofstream(outputFolder() / ("0-" + id + ".png")) << "here already";
    EXPECT_EQ(save("1"), "Save an image..\n"
                         "Which?> \n"
                         "Returning image {1}\n"
                         "Saved image to:\n"
                         " FOLDER/Test Camera/0-{1} (2).png\n");
    EXPECT_EQ(saved("0-" + id + " (2).png").width, 320U);
    EXPECT_EQ(std::filesystem::file_size(outputFolder() / ("0-" + id + ".png")), 12U);
}

TEST_F(SavePictureTest, APictureOfAnotherCameraRaisesAndLeavesAnEmptyFile) {
    connect();
    const std::string id = take();
    connect(); // the same camera again is a connection of its own
    EXPECT_EQ(save("1"), "Save an image..\n"
                         "Which?> \n"
                         "This camera does not have image {1}\n");
    EXPECT_EQ(raised, winrt::result::invalidArgument);
    EXPECT_EQ(filesIn(outputFolder()), Texts{"0-" + id + ".png"});
    EXPECT_TRUE(std::filesystem::is_empty(outputFolder() / ("0-" + id + ".png")));
    EXPECT_EQ(imageIds().size(), 1U);
    EXPECT_EQ(connection.saveCounter, 1);
}

TEST_F(SavePictureTest, AnIdOfAFailedCaptureRaisesTheSameWay) {
    useScenario(R"("groups": [)" + cameraGroup("cam", cameraName()) +
                R"(], "cameras": {"cam": {"capture": {"outcome": "error"}}})");
    connect();
    take();
    EXPECT_EQ(save("1"), "Save an image..\n"
                         "Which?> \n"
                         "This camera does not have image {1}\n");
    EXPECT_EQ(raised, winrt::result::invalidArgument);
}

TEST_F(SavePictureTest, AFolderThatHasGoneRaises) {
    connect();
    take();
    TypedConsole console("1");
    const auto folder = openOutputFolder(console, connection.camera.name);
    std::filesystem::remove(outputFolder());
    EXPECT_EQ(errorOf([&] { savePicture(console, connection, folder); }).code(), winrt::result::notFound);
    EXPECT_EQ(imageIds().size(), 1U);
}

} // namespace
