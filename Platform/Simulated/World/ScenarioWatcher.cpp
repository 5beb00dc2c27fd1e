#include "Platform/Simulated/World/ScenarioWatcher.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/ErrnoError.h"
#include "Platform/Shared/PlatformError.h"
#include "Platform/Shared/StartThread.h"
#include "Platform/Simulated/Scenario/FileText.h"

#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <system_error>
#include <utility>

namespace Platform::Simulated {
namespace {

// A file that is being written, or is between the two steps of an editor's replacement, is whole again well
// within this time.
constexpr std::chrono::milliseconds writingTime{100};

constexpr std::uint32_t changes = IN_CREATE | IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE;

/// The system's own text alone would send a person looking for open files or a full disk.
winrt::hresult_error inotifyError(std::string_view operation, const std::filesystem::path& folder, int error) {
    std::string reason = std::generic_category().message(error);
    if (error == EMFILE)
        reason += " (fs.inotify.max_user_instances, or the descriptors of the process)";
    else if (error == ENOSPC)
        reason += " (fs.inotify.max_user_watches)";
    return Shared::platformError(operation, folder.native(), Shared::codeOfErrno(error), reason);
}

Shared::FileDescriptor watchFolder(const std::filesystem::path& folder) {
    Shared::FileDescriptor inotify(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (!inotify.isOpen())
        throw inotifyError("inotify_init1", folder, errno);
    if (::inotify_add_watch(inotify.get(), folder.c_str(), changes) < 0)
        throw inotifyError("inotify_add_watch", folder, errno);
    return inotify;
}

/// The platform has no log.
void complain(const char* what, const winrt::hresult_error& error) {
    const std::string line = what + Halden::toUtf8(error.message()) + "\n";
    std::fputs(line.c_str(), stderr);
}

constexpr const char* followsNoMore = "Simulated cameras do not follow their file: ";

} // namespace

ScenarioWatcher::ScenarioWatcher(std::filesystem::path file, TakeOver takeOver)
    : _file(std::move(file)), _takeOver(std::move(takeOver)), _stop(_file.native()) {
    try {
        // A folder that is missing is told as a file that is.
        if (std::error_code ignored; std::filesystem::exists(_file.parent_path(), ignored))
            _inotify = watchFolder(_file.parent_path()); // before the first look, so that no change is missed
    } catch (const winrt::hresult_error& error) {
        complain(followsNoMore, error);
    }
    _last = look();
    this->takeOver(_last);
    try {
        if (_inotify.isOpen())
            _thread = Shared::startThread(_file.native(), [this] { run(); });
    } catch (const winrt::hresult_error& error) {
        complain(followsNoMore, error);
    }
}

ScenarioWatcher::~ScenarioWatcher() {
    _stop.wake();
    if (_thread.joinable())
        _thread.join();
}

ScenarioWatcher::Version ScenarioWatcher::look() const {
    struct stat status{};
    if (::stat(_file.c_str(), &status) != 0)
        return {};
    Version version;
    try {
        version.text = readFileText(_file, longestScenario);
    } catch (const winrt::hresult_error&) {
        return version; // taking it over reports why
    }
    version.inode = status.st_ino;
    version.changed = std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
    return version;
}

void ScenarioWatcher::takeOver(const Version& version) const {
    _takeOver(version.text ? *version.text : readFileText(_file, longestScenario));
}

int ScenarioWatcher::pollTimeout() const {
    if (!_confirmAt)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*_confirmAt - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(0, left.count()));
}

void ScenarioWatcher::run() {
    for (;;) {
        std::array<pollfd, 2> descriptors{pollfd{_inotify.get(), POLLIN, 0}, pollfd{_stop.descriptor(), POLLIN, 0}};
        const int ready = ::poll(descriptors.data(), descriptors.size(), pollTimeout());
        if (ready < 0 && errno != EINTR)
            return;
        if (ready > 0 && descriptors[1].revents != 0)
            return;
        if (ready > 0 && readEvents())
            follow(false);
        if (_confirmAt && Clock::now() >= *_confirmAt)
            follow(true);
    }
}

/// True if one of the events that wait is about the file.
bool ScenarioWatcher::readEvents() {
    alignas(inotify_event) std::array<char, 16384> buffer{};
    const std::string name = _file.filename().native();
    bool found = false;
    for (;;) {
        const ssize_t count = ::read(_inotify.get(), buffer.data(), buffer.size());
        if (count <= 0)
            return found;
        for (std::size_t offset = 0; offset < static_cast<std::size_t>(count);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + offset, sizeof event);
            const bool lost = (event.mask & IN_Q_OVERFLOW) != 0;
            found = found || lost || (event.len > 0 && name == buffer.data() + offset + sizeof event);
            offset += sizeof event + event.len;
        }
    }
}

void ScenarioWatcher::follow(bool isConfirmed) {
    _confirmAt.reset();
    const Version version = look();
    if (version == _last)
        return;
    try {
        takeOver(version);
    } catch (const winrt::hresult_error& error) {
        if (!isConfirmed) {
            _confirmAt = Clock::now() + writingTime;
            return;
        }
        complain("Simulated cameras stay as they are: ", error);
    }
    _last = version;
}

} // namespace Platform::Simulated
