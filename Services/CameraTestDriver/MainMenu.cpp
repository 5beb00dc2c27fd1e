#include "Services/CameraTestDriver/MainMenu.h"

#include "Services/CameraTestDriver/CameraListing.h"
#include "Services/CameraTestDriver/MenuState.h"

#include <utility>

namespace {

void printHelp(Console& console) {
    console.writeLine("You may..");
    console.writeLine("1. List Available Cameras");
    console.writeLine("2. Connect to a listed Camera ");
    console.writeLine("3. Connect to a known camera ");
    console.writeLine("4. List Connected Cameras");
    console.writeLine("5. Act on Connected Cameras.");
    console.writeLine("6. Exit App.");
    console.writeLine();
}

void printAvailableCameras(Console& console, DriverContext& context) {
    context.availableCameras.clear();
    listAvailableCameras(console, context);
    console.writeLine("Found these.. ");
    for (std::size_t i = 0; i < context.availableCameras.size(); ++i) {
        console.writeLine(i, ".");
        printCamera(console, context.availableCameras[i]);
    }
}

/// Keeps the capture as a new connection; false for a null one.
bool keepConnection(Console& console, DriverContext& context, Platform::MediaCapture capture, DriverCamera camera) {
    if (!capture)
        return false;
    DriverConnection connection;
    connection.mediaCapture = std::move(capture);
    connection.camera = std::move(camera);
    context.connectedCameras.push_back(std::move(connection));
    console.writeLine("Ok, it's connected now.. Well done! ");
    return true;
}

void connectListedCamera(Console& console, DriverContext& context) {
    console.writeLine();
    console.writeLine("Connect to Camera..");
    std::int32_t index = -1;
    console.ask("Which?> ", index);
    if (!isIndexOf(context.availableCameras, index)) {
        console.writeLine("We don't have that one, maybe try List Available Cameras");
        return;
    }
    const DriverCamera camera = context.availableCameras[static_cast<std::size_t>(index)];
    if (!keepConnection(console, context, connectCamera(camera), camera))
        console.writeLine("That failed :(");
}

void connectKnownCamera(Console& console, DriverContext& context) {
    DriverCamera camera;
    camera.name = u"Reloaded";
    console.writeLine("Connect known..");
    console.ask("ID?>", camera.id);
    console.writeLine();
    console.ask("Kind?>", camera.kind);
    console.writeLine();
    if (!keepConnection(console, context, connectCamera(camera), camera))
        console.writeLine("Can't find camera with ", camera.id, ":", camera.kind);
}

void printConnectedCameras(Console& console, const DriverContext& context) {
    console.writeLine("Connected cams..");
    for (std::size_t i = 0; i < context.connectedCameras.size(); ++i) {
        console.writeLine(i, ": ");
        printCamera(console, context.connectedCameras[i].camera);
    }
}

MenuState selectConnection(Console& console, DriverContext& context) {
    console.writeLine("Work with connected cam..");
    std::int32_t index = -1;
    console.ask("Which?> ", index);
    if (!isIndexOf(context.connectedCameras, index)) {
        console.writeLine("We don't have a connected cam there, maybe try List Connected Cams");
        return MainMenuState;
    }
    context.selectedConnection = index;
    return CameraMenuState;
}

} // namespace

int runMainMenu(Console& console, DriverContext& context) {
    for (std::int32_t choice = -1;;) {
        console.ask("Main> ", choice);
        switch (choice) {
        case 0:
            printHelp(console);
            return MainMenuState;
        case 1:
            printAvailableCameras(console, context);
            return MainMenuState;
        case 2:
            connectListedCamera(console, context);
            return MainMenuState;
        case 3:
            connectKnownCamera(console, context);
            return MainMenuState;
        case 4:
            printConnectedCameras(console, context);
            return MainMenuState;
        case 5:
            return selectConnection(console, context);
        case 6:
            return LeaveState;
        default:
            console.writeLine("We don't actually have anything implemented for that");
        }
    }
}

void printCamera(Console& console, const DriverCamera& camera) {
    console.writeLine(camera.name, ":", camera.make, ":", camera.model);
    console.writeLine(camera.width, "x", camera.height);
    console.writeLine(camera.id, ":", camera.kind);
    console.writeLine();
}
