#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// One run folder.
struct RunFolderEntry {
    std::int64_t creationTime = 0; ///< nanoseconds since the epoch
    std::int64_t startTime = 0;    ///< seconds since the epoch, as the name tells it
    std::u16string name;
    bool hasTime = false;

    /// The entry of a run that started then. Its name is that local time.
    static RunFolderEntry ofStartTime(std::int64_t secondsSinceEpoch);

    /// The entry of a folder of that name; hasTime is false unless the name tells a time.
    static RunFolderEntry ofName(const std::u16string& name);
};

/// Whether a name may be a run folder's by its length and its "-", whatever time it tells.
bool looksLikeRunFolder(std::u16string_view name);

/// Seconds since the epoch of the local time that the name tells (year-month-day_hour-minute-second, the second may
/// be missing); not positive if it tells none.
std::int64_t timeOfRunFolderName(std::u16string_view name);
