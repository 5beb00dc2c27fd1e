#include "Platform/Shared/FileStream.h"

#include "Platform/Shared/ErrnoError.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace Platform::Shared {

std::uint64_t FileStream::Size() const {
    struct stat status{};
    if (::fstat(_file.get(), &status) != 0)
        throw errnoError("fstat", _path, errno);
    return static_cast<std::uint64_t>(status.st_size);
}

std::size_t FileStream::Read(std::span<std::uint8_t> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::pread(_file.get(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(_position));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw errnoError("read", _path, errno);
        if (count == 0)
            break;
        done += static_cast<std::size_t>(count);
        _position += static_cast<std::uint64_t>(count);
    }
    return done;
}

void FileStream::Write(std::span<const std::uint8_t> bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            ::pwrite(_file.get(), bytes.data() + done, bytes.size() - done, static_cast<off_t>(_position));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            throw errnoError("write", _path, errno);
        done += static_cast<std::size_t>(count);
        _position += static_cast<std::uint64_t>(count);
    }
}

} // namespace Platform::Shared
