#include "Services/CameraTestDriver/CameraMenu.h"

#include "Services/CameraTestDriver/Adjustments.h"
#include "Services/CameraTestDriver/CameraStatus.h"
#include "Services/CameraTestDriver/Convergence.h"
#include "Services/CameraTestDriver/Images.h"
#include "Services/CameraTestDriver/MenuState.h"
#include "Services/CameraTestDriver/OutputFolder.h"
#include "Services/CameraTestDriver/SavePicture.h"

#include <map>
#include <string_view>

namespace {

const std::map<int, std::string_view>& commandTexts() {
    static const std::map<int, std::string_view> texts{
        {1, "Converge camera settings"},
        {2, "Adjust exposure up"},
        {3, "Adjust exposure down"},
        {4, "Adjust brightness up"},
        {5, "Adjust brightness down "},
        {6, "Adjust contrast up"},
        {7, "Adjust contrast down"},
        {8, "Adjust ISO up"},
        {9, "Adjust ISO down"},
        {10, "Capture an image with current settings"},
        {11, "List available images"},
        {12, "Save captured image"},
        {13, "Print image"},
        {14, "Put down the camera"},
    };
    return texts;
}

void printHelp(Console& console) {
    console.writeLine("You may..");
    for (const auto& [number, text] : commandTexts())
        console.writeLine(number, ". ", text);
}

bool askFlag(Console& console, std::string_view prompt) {
    bool flag = false;
    console.ask(prompt, flag);
    console.writeLine();
    return flag;
}

void convergeAsAsked(Console& console, const DriverConnection& connection) {
    console.writeLine("Converge camera settings..");
    const bool exposure = askFlag(console, "Exposure?> ");
    const bool focus = askFlag(console, "Focus?> ");
    const bool wb = askFlag(console, "WhiteBalance?> ");
    console.writeLine();
    converge(console, connection, exposure, focus, wb);
}

void takePicture(Console& console, DriverConnection& connection) {
    console.writeLine("Capturing..");
    printCameraStatus(console, connection.mediaCapture);
    const auto id = captureImage(console, connection);
    console.writeLine("Received Picture Id: ", imageIdToText(id));
    imageIds().push_back(id);
}

void printImageIds(Console& console) {
    console.writeLine("Available photos..");
    for (std::size_t i = 0; i < imageIds().size(); ++i)
        console.writeLine(i + 1, ": ", imageIdToText(imageIds()[i]));
}

/// False for a number that is no command from 2 to 9: the even ones step up, the odd ones down.
bool adjust(std::int32_t choice, Console& console, const Platform::MediaCapture& capture) {
    switch (choice) {
    case 2:
    case 3:
        adjustExposure(console, capture, choice == 2);
        return true;
    case 4:
    case 5:
        adjustBrightness(console, capture, choice == 4);
        return true;
    case 6:
    case 7:
        adjustContrast(console, capture, choice == 6);
        return true;
    case 8:
    case 9:
        adjustIso(console, capture, choice == 8);
        return true;
    default:
        return false;
    }
}

/// False for a number that is no command from 0 to 13.
bool carryOut(std::int32_t choice, Console& console, DriverConnection& connection,
              const Platform::StorageFolder& folder) {
    switch (choice) {
    case 0:
        printHelp(console);
        break;
    case 1:
        convergeAsAsked(console, connection);
        break;
    case 10:
        takePicture(console, connection);
        break;
    case 11:
        printImageIds(console);
        break;
    case 12:
        savePicture(console, connection, folder);
        break;
    case 13:
        console.writeLine("ERROR: PC LOAD LETTER (0x80A4FFE7)"); // the driver has no printing
        break;
    default:
        return adjust(choice, console, connection.mediaCapture);
    }
    return true;
}

} // namespace

int runCameraMenu(Console& console, DriverContext& context) {
    if (!isIndexOf(context.connectedCameras, context.selectedConnection)) {
        console.writeLine("There is not currently connected cam selected..");
        return MainMenuState;
    }
    DriverConnection& connection = context.connectedCameras[static_cast<std::size_t>(context.selectedConnection)];
    const auto folder = openOutputFolder(console, connection.camera.name);
    for (std::int32_t choice = -1;;) {
        console.ask("ActOnCamera> ", choice);
        if (choice == 14)
            return MainMenuState; // the camera stays open, and in the list
        if (carryOut(choice, console, connection, folder))
            return CameraMenuState;
        console.writeLine("We don't actually have that implemented.. ");
    }
}
