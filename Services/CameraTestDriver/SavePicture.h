#pragma once

#include "Platform/Interface/Storage.h"
#include "Services/CameraTestDriver/Console.h"
#include "Services/CameraTestDriver/DriverConnection.h"

/// Asks which picture, numbered from 1, writes it into the folder as a PNG file and takes its id from the
/// list. Blocks; raises the platform's errors: a picture of another camera leaves an empty file behind.
void savePicture(Console& console, DriverConnection& connection, const Platform::StorageFolder& folder);
