#pragma once

#include <dirent.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

struct statx;

namespace Halden::System {

struct FolderEntry {
    std::string name;              ///< as the file system has it, without the folder
    std::int64_t creationTime = 0; ///< nanoseconds since the epoch; 0 if the entry has just gone
};

/// The time at which a file or folder was made, where the file system knows it, else that of its last change;
/// nanoseconds since the epoch.
std::int64_t creationTimeOf(const struct statx& attributes);

/// Delivers ".", then "..", then every other entry of a folder, of whatever kind, in the order of the file system.
/// One thread at a time.
class FolderWalk {
public:
    explicit FolderWalk(const std::string& folder);

    /// The errno of the failure to open the folder, 0 if it was opened.
    int openError() const { return _openError; }

    /// Nothing at the end of the walk, and after a failure.
    std::optional<FolderEntry> next();

    /// The errno of the failure that ended the walk, 0 if it has simply come to its end.
    int readError() const { return _readError; }

private:
    struct Close {
        void operator()(DIR* folder) const { closedir(folder); }
    };

    std::optional<std::string> nextName();
    std::int64_t creationTime(const std::string& name) const;

    std::unique_ptr<DIR, Close> _folder;
    int _openError = 0;
    int _readError = 0;
    int _delivered = 0;
};

} // namespace Halden::System
