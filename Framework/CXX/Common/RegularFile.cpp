#include "Framework/CXX/Common/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <system_error>

namespace Halden {

namespace {

class OpenFile {
public:
    // Without waiting: opening a pipe would last until somebody writes into it.
    explicit OpenFile(const std::filesystem::path& file)
        : _descriptor(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
    ~OpenFile() {
        if (_descriptor >= 0)
            close(_descriptor);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int get() const { return _descriptor; }

private:
    const int _descriptor;
};

void fail(FileReading& reading, const char* operation, int error) {
    reading.operation = operation;
    reading.error = error;
    reading.reason = std::generic_category().message(error);
}

void failAsTooLong(FileReading& reading, std::size_t mostBytes) {
    fail(reading, "read", EFBIG);
    reading.reason = "it is longer than " + std::to_string(mostBytes) + " bytes";
    reading.bytes = {};
}

bool isReadable(FileReading& reading, int descriptor, std::size_t mostBytes) {
    struct stat status{};
    if (descriptor < 0 || fstat(descriptor, &status) != 0) {
        fail(reading, "open", errno);
    } else if (S_ISDIR(status.st_mode)) {
        fail(reading, "open", EISDIR);
    } else if (!S_ISREG(status.st_mode)) {
        fail(reading, "open", EINVAL);
        reading.reason = "it is no regular file";
    } else if (static_cast<std::uintmax_t>(status.st_size) > mostBytes) {
        failAsTooLong(reading, mostBytes);
    }
    return reading.error == 0;
}

} // namespace

FileReading readRegularFile(const std::filesystem::path& file, std::size_t mostBytes) {
    FileReading reading;
    const OpenFile opened(file);
    if (!isReadable(reading, opened.get(), mostBytes))
        return reading;
    std::array<char, 65536> block{};
    for (;;) {
        const ssize_t count = read(opened.get(), block.data(), block.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            fail(reading, "read", errno);
        if (count <= 0)
            return reading;
        reading.bytes.append(block.data(), static_cast<std::size_t>(count));
        if (reading.bytes.size() > mostBytes) { // one that grows, or whose size the system does not tell
            failAsTooLong(reading, mostBytes);
            return reading;
        }
    }
}

} // namespace Halden
