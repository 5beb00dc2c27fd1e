#pragma once

#include <string>

/// Names the folder of all runs, and is looked for in the path of a run.
inline constexpr char16_t diagnosticsFolderName[] = u"Diagnostics";

/// Where a run's output goes. An empty base folder marks a set that can't be used.
struct DiagnosticsFolders {
    std::u16string baseFolder;        ///< the parent of the folder of all runs
    std::u16string diagnosticsFolder; ///< the folder of all runs
    std::u16string runFolder;
    std::u16string runName; ///< the run folder's path below the folder of all runs
    std::u16string logFolder;
    std::u16string currentDataFolder; ///< of the current trace
    std::u16string tracesFolder;
    std::string currentTraceId; ///< UTF-8
    std::string defaultTraceId; ///< UTF-8, of the trace made at the start
    std::u16string crashFolder; ///< not empty: crash recording is installed

    /// The set for a run folder. Without the word "Diagnostics" in the path, only the run folder is filled. Throws
    /// std::out_of_range for a path that ends in that word where it occurs first.
    static DiagnosticsFolders ofRunFolder(const std::u16string& path);
};
