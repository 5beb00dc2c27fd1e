#pragma once

#include "Services/CameraTestDriver/DriverCamera.h"
#include "Services/CameraTestDriver/DriverConnection.h"

#include <cstdint>
#include <vector>

/// What the driver knows while it runs.
struct DriverContext {
    std::vector<DriverCamera> availableCameras;     ///< what the last listing found
    std::vector<DriverConnection> connectedCameras; ///< in the order of connecting; nothing leaves it
    std::int32_t selectedConnection = -1;
};

/// Whether the list has an element at that place; any number may be asked.
template <typename T> bool isIndexOf(const std::vector<T>& list, std::int32_t index) {
    return index >= 0 && static_cast<std::size_t>(index) < list.size();
}
