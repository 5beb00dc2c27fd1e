#include "Platform/Simulated/World/Journal.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/ErrnoError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string_view>

namespace Platform::Simulated {
namespace {

std::string compact(const Json::Value& value) {
    static const Json::StreamWriterBuilder builder = [] {
        Json::StreamWriterBuilder settings;
        settings["indentation"] = "";
        settings["emitUTF8"] = true;
        return settings;
    }();
    return Json::writeString(builder, value);
}

std::string member(const char* name, const Json::Value& value) {
    return std::string(", \"") + name + "\": " + compact(value);
}

/// The beginning of a line: the moment on the steady clock, in seconds, and the thread's number in the system.
std::string momentAndThread() {
    const std::chrono::duration<double> now = std::chrono::steady_clock::now().time_since_epoch();
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), "{\"t\": %.6f, \"thread\": \"%d\"", now.count(), ::gettid());
    return text.data();
}

/// A pipe or a terminal may be the journal as well as a regular file. Whoever reads it does not hold the cameras up,
/// neither by not being there nor by being slow.
Shared::FileDescriptor openJournal(const std::filesystem::path& file) {
    constexpr int flags = O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Shared::FileDescriptor opened(::open(file.c_str(), flags, 0666));
    if (!opened.isOpen())
        throw Shared::errnoError("open", file.native(), errno);
    struct stat status{};
    if (::fstat(opened.get(), &status) != 0 || S_ISBLK(status.st_mode))
        throw Shared::errnoError("open", file.native(), EINVAL);
    return opened;
}

} // namespace

void Journal::moveTo(const std::filesystem::path& file) {
    std::lock_guard lock(_mutex);
    if (file == _path)
        return;
    _file = file.empty() ? Shared::FileDescriptor() : openJournal(file);
    _path = file;
}

void Journal::called(const JournalCall& call) { write(call, ""); }

void Journal::ended(const JournalCall& call, const Json::Value& result) {
    write(call, member("ended", true) + member("result", result));
}

void Journal::failed(const JournalCall& call, winrt::hresult error) {
    write(call, member("ended", true) + member("error", error));
}

void Journal::returned(const JournalCall& call, const Json::Value& result) { write(call, member("result", result)); }

void Journal::raised(const JournalCall& call, winrt::hresult error) { write(call, member("error", error)); }

void Journal::write(const JournalCall& call, const std::string& ending) {
    std::lock_guard lock(_mutex);
    if (!_file.isOpen())
        return;
    std::string line = momentAndThread(); // under the lock, so that the lines stand in the order of their times
    if (!call.device.empty())
        line += member("device", journalText(call.device));
    line += member("call", call.name);
    if (call.control != nullptr)
        line += member("control", call.control);
    if (!call.arguments.isNull())
        line += member("args", call.arguments);
    line += ending + "}\n";
    for (std::string_view rest = line; !rest.empty();) {
        const ssize_t count = ::write(_file.get(), rest.data(), rest.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return; // a full disk or pipe takes the journal away, not the cameras
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
}

Json::Value journalNumber(double value) {
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value > 0 ? "inf" : "-inf";
    return value;
}

Json::Value journalText(const std::u16string& text) { return Halden::toUtf8(text); }

} // namespace Platform::Simulated
