#pragma once

/// Marks what programs see of the library; everything else is hidden.
#define CAMERA_HUB_CLIENT_EXPORT [[gnu::visibility("default")]]
