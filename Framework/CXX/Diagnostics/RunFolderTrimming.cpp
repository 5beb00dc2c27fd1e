#include "Framework/CXX/Diagnostics/RunFolderTrimming.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/DiagnosticsFolders.h"
#include "Framework/CXX/Diagnostics/PathText.h"
#include "Framework/CXX/Diagnostics/RunFolderEntry.h"
#include "Framework/CXX/System/FolderWalk.h"

#include <ftw.h>

#include <algorithm>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <optional>

namespace Halden {

namespace {

std::deque<RunFolderEntry> findRunFolders(System::FolderWalk& walk) {
    std::deque<RunFolderEntry> found;
    walk.next(); // the folder itself comes first
    while (const std::optional<System::FolderEntry> entry = walk.next()) {
        RunFolderEntry folder = RunFolderEntry::ofName(toUtf16(entry->name));
        if (folder.hasTime) {
            folder.creationTime = entry->creationTime;
            found.push_back(folder);
        }
    }
    std::ranges::stable_sort(found, {}, &RunFolderEntry::creationTime);
    return found;
}

int removeEntry(const char* path, const struct stat* /* attributes */, int /* kind */, FTW* /* place */) {
    std::remove(path); // what cannot be removed stays, without a word
    return 0;
}

/// With all that is in it; links are not followed. Not by the standard library, which ends the process where memory
/// runs out while it walks a folder.
void removeForGood(const std::filesystem::path& folder) {
    constexpr int descriptors = 16;
    nftw(folder.c_str(), removeEntry, descriptors, FTW_DEPTH | FTW_PHYS);
}

} // namespace

void trimRunFolders(const std::u16string& baseFolder, int keepCount) {
    const std::u16string all = joinPaths(baseFolder, diagnosticsFolderName);
    System::FolderWalk walk(toUtf8(all));
    if (walk.openError() != 0) {
        std::printf("FindFirstFile failed (%d)\n", walk.openError());
        return;
    }
    std::deque<RunFolderEntry> runs = findRunFolders(walk);
    if (walk.readError() != 0)
        std::printf("FindNextFile error. Error is %u.\n", static_cast<unsigned>(walk.readError()));
    const auto keep = static_cast<std::size_t>(std::max(keepCount, 1));
    while (runs.size() > keep) {
        removeForGood(toPath(all) / toPath(runs.front().name));
        runs.pop_front();
    }
}

} // namespace Halden
