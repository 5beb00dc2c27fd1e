#include "Framework/CXX/Diagnostics/RunFolderTrimming.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/Diagnostics/DiagnosticsFolders.h"
#include "Framework/CXX/Diagnostics/PathText.h"
#include "Framework/CXX/Diagnostics/RunFolderEntry.h"
#include "Framework/CXX/System/FolderWalk.h"

#include <algorithm>
#include <cstdio>
#include <deque>
#include <filesystem>
#include <optional>
#include <system_error>

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
        std::error_code ignored;
        std::filesystem::remove_all(toPath(all) / toPath(runs.front().name), ignored);
        runs.pop_front();
    }
}

} // namespace Halden
