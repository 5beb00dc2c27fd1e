// The name of a folder among the run folders, which anybody may have made.

#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/RunFolderEntry.h"
#include "Tests/Fuzz/FuzzTarget.h"

void fuzz(const std::uint8_t* data, std::size_t size) {
    const auto name = Halden::toUtf16(std::string(reinterpret_cast<const char*>(data), size));
    const RunFolderEntry entry = RunFolderEntry::ofName(name);
    looksLikeRunFolder(name);
    require(entry.name == name, "an entry keeps its name");
    if (entry.hasTime)
        require(timeOfRunFolderName(RunFolderEntry::ofStartTime(entry.startTime).name) == entry.startTime,
                "a start time survives being made a name of");
}

std::vector<std::string> fuzzSeeds() {
    return {"2026-11-13_22-33-19", "2026-11-13_22-33", "1969-12-31_23-59-59", "2026-02-30_24-60-61", "logs"};
}
