#pragma once

#include "Platform/Interface/DeviceInformation.h"

#include <string>

/// Asks the platform for the maker and the model of a frame source's device: the maker of the device
/// node wins over that of the container, the model is the container's. Text that the platform does not
/// have leaves the argument as it was. Blocks without limit; raises the platform's errors.
void getMakeAndModel(Platform::DeviceInformation device, std::string& model, std::string& make);
