#include "Tools/CameraHub/Terminal/OutputFile.h"

#include "Tools/CameraHub/Terminal/ExitCode.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

namespace CommandLine {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const fs::path& file, int error) {
    throw Failure(ExitCode::NotWritten,
                  "cannot write " + file.string() + ": " + std::strerror(error) + "; name another place with -o");
}

/// A file beside the one that is meant, which is gone unless it was given that one's name.
class TemporaryFile {
public:
    explicit TemporaryFile(const fs::path& meant) : _meant(meant) {
        _name = (meant.parent_path() / ".camera-hub-XXXXXX").string();
        _descriptor = mkostemp(_name.data(), O_CLOEXEC);
        if (_descriptor < 0)
            fail(_meant, errno);
    }
    ~TemporaryFile() {
        if (_descriptor >= 0)
            close(_descriptor);
        if (!_name.empty())
            unlink(_name.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void write(std::span<const std::uint8_t> bytes) {
        while (!bytes.empty()) {
            const ssize_t count = ::write(_descriptor, bytes.data(), bytes.size());
            if (count < 0 && errno != EINTR)
                fail(_meant, errno);
            bytes = bytes.subspan(static_cast<std::size_t>(count < 0 ? 0 : count));
        }
        const mode_t mask = umask(0);
        umask(mask);
        if (fchmod(_descriptor, 0666 & ~mask) != 0)
            fail(_meant, errno);
        if (close(std::exchange(_descriptor, -1)) != 0)
            fail(_meant, errno);
    }

    /// Takes the place of what stands there.
    void replace(const fs::path& file) {
        if (rename(_name.c_str(), file.c_str()) != 0)
            fail(file, errno);
        _name.clear();
    }

    /// False where something stands there. A network's file system may not be able to look and rename in one step.
    bool becomes(const fs::path& file) {
        if (renameat2(AT_FDCWD, _name.c_str(), AT_FDCWD, file.c_str(), RENAME_NOREPLACE) == 0) {
            _name.clear();
            return true;
        }
        if (errno == EEXIST || (errno == EINVAL && access(file.c_str(), F_OK) == 0))
            return false;
        if (errno != EINVAL && errno != ENOENT)
            fail(file, errno);
        replace(file);
        return true;
    }

private:
    fs::path _meant;
    std::string _name;
    int _descriptor = -1;
};

} // namespace

void writeFile(const fs::path& file, std::span<const std::uint8_t> bytes) {
    TemporaryFile temporary(file);
    temporary.write(bytes);
    temporary.replace(file);
}

fs::path writeNewFile(const fs::path& folder, const std::string& name, const std::string& ending,
                      std::span<const std::uint8_t> bytes) {
    fs::path file = folder / (name + ending);
    TemporaryFile temporary(file);
    temporary.write(bytes);
    for (int number = 2; !temporary.becomes(file); ++number)
        file = (folder / name).concat("-" + std::to_string(number)).concat(ending);
    return file;
}

void makeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error)
        fail(folder, error.value());
}

} // namespace CommandLine
