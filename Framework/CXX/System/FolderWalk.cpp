#include "Framework/CXX/System/FolderWalk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

namespace Halden::System {

namespace {

bool isFolderItselfOrParent(const std::string& name) { return name == "." || name == ".."; }

} // namespace

std::int64_t creationTimeOf(const struct statx& attributes) {
    constexpr std::int64_t nanosecondsASecond = 1'000'000'000;
    const bool known = (attributes.stx_mask & STATX_BTIME) != 0;
    const statx_timestamp& time = known ? attributes.stx_btime : attributes.stx_mtime;
    return time.tv_sec * nanosecondsASecond + time.tv_nsec;
}

FolderWalk::FolderWalk(const std::string& folder) : _folder(opendir(folder.c_str())) {
    if (!_folder)
        _openError = errno;
}

std::optional<FolderEntry> FolderWalk::next() {
    const std::optional<std::string> name = nextName();
    if (!name)
        return std::nullopt;
    return FolderEntry{*name, creationTime(*name)};
}

std::optional<std::string> FolderWalk::nextName() {
    if (!_folder)
        return std::nullopt;
    if (_delivered < 2)
        return ++_delivered == 1 ? "." : "..";
    for (;;) {
        errno = 0;
        const dirent* const entry = readdir(_folder.get());
        if (entry == nullptr) {
            _readError = errno;
            return std::nullopt;
        }
        std::string name = static_cast<const char*>(entry->d_name);
        if (!isFolderItselfOrParent(name))
            return name;
    }
}

std::int64_t FolderWalk::creationTime(const std::string& name) const {
    struct statx attributes{};
    if (statx(dirfd(_folder.get()), name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_BTIME | STATX_MTIME, &attributes) != 0)
        return 0;
    return creationTimeOf(attributes);
}

} // namespace Halden::System
