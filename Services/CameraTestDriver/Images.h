#pragma once

#include "Platform/Interface/Guid.h"
#include "Services/CameraTestDriver/Console.h"
#include "Services/CameraTestDriver/DriverConnection.h"

#include <string>
#include <vector>

/// The pictures taken and not yet saved, of all cameras together, in the order of taking. Stays for the
/// life of the process. Main thread.
std::vector<Platform::Guid>& imageIds();

/// The id as people see it, and as it names a picture in its connection: 38 characters with the braces.
std::string imageIdToText(const Platform::Guid& id);

/// Takes a picture into the connection; its new id. Blocks without limit. A platform failure is told on
/// the console, and the id is then one without a picture.
Platform::Guid captureImage(Console& console, DriverConnection& connection);

/// The picture; null, which the console tells as well, if this connection does not have it.
Platform::SoftwareBitmap getImage(Console& console, const DriverConnection& connection, const Platform::Guid& id);

/// Forgets a capture that is still under way. A picture that has been taken stays.
void deleteImage(Console& console, DriverConnection& connection, const Platform::Guid& id);
