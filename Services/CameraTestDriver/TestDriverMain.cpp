#include "Services/CameraTestDriver/TestDriverMain.h"

#include "Services/CameraAccess/PlatformError.h"
#include "Services/CameraTestDriver/CameraMenu.h"
#include "Services/CameraTestDriver/MainMenu.h"
#include "Services/CameraTestDriver/MenuState.h"

#include <iostream>

int testDriverMain() {
    Console console(std::cin, std::cout);
    return testDriverMain(console);
}

int testDriverMain(Console& console) {
    console.writeLine("Windows Camera Test Driver ");
    console.writeLine("Type 0 for help");
    DriverContext context;
    try {
        for (int state = MainMenuState; state != LeaveState;)
            state = state == CameraMenuState ? runCameraMenu(console, context) : runMainMenu(console, context);
    } catch (const winrt::hresult_error& error) {
        console.writeLine(describePlatformError(error));
    }
    return 0;
}
