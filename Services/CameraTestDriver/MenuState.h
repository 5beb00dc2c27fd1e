#pragma once

/// What the menus return: where the driver goes next.
enum MenuState : int { MainMenuState = 0, CameraMenuState = 2, LeaveState = 3 };
