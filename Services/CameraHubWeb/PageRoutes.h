#pragma once

#include "Services/CameraHubWeb/Http/Router.h"

namespace CameraHubWeb {

/// Where browsers find the page, and programs the interface's description: all that is part of the program itself.
void addPageRoutes(Router& router);

} // namespace CameraHubWeb
