#pragma once

#include "Framework/CXX/System/ExecutablePath.h"
#include "Platform/Interface/Storage.h"
#include "Services/CameraTestDriver/Console.h"

#include <filesystem>
#include <string>

/// The folder for pictures of a camera of that name, beside the executable; made where it is missing. A
/// name with separators gives a folder within a folder; nothing, ".", ".." and what leads out of the
/// executable's folder are refused. Without an executable it is looked for at C:\. Blocks; raises the
/// platform's errors.
Platform::StorageFolder openOutputFolder(Console& console, const std::u16string& cameraName,
                                         const std::filesystem::path& executable = Halden::System::executablePath());
