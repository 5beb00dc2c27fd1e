#include "Platform/Simulated/Scenario/FileText.h"

#include "Framework/CXX/Common/RegularFile.h"
#include "Platform/Shared/ErrnoError.h"
#include "Platform/Shared/PlatformError.h"

#include <utility>

namespace Platform::Simulated {

std::string readFileText(const std::filesystem::path& file, std::size_t mostBytes) {
    Halden::FileReading reading = Halden::readRegularFile(file, mostBytes);
    if (reading.error != 0)
        throw Shared::platformError(reading.operation, file.native(), Shared::codeOfErrno(reading.error),
                                    reading.reason);
    return std::move(reading.bytes);
}

} // namespace Platform::Simulated
