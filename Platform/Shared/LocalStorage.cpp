#include "Platform/Shared/LocalStorage.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/ErrnoError.h"
#include "Platform/Shared/FileStream.h"
#include "Platform/Shared/PlatformError.h"
#include "Platform/Shared/RunAsync.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

namespace Platform::Shared {
namespace {

namespace fs = std::filesystem;

std::u16string textOf(const fs::path& path) { return Halden::toUtf16(path.native()); }

/// The path in UTF-8; raises for text that is not well-formed or would end early at a NUL.
std::string requirePathText(std::string_view operation, const std::u16string& path) {
    std::string text = Halden::toUtf8(path);
    if (text.empty() || text.find('\0') != std::string::npos)
        throw platformError(operation, text, winrt::result::invalidArgument, "The name cannot be used.");
    return text;
}

/// The names between the separators; those at the end do not count.
std::vector<std::string> splitName(std::string_view operation, const std::u16string& name) {
    const std::string text = requirePathText(operation, name);
    const std::size_t end = text.find_last_not_of("/\\") + 1;
    std::vector<std::string> parts;
    for (std::size_t start = 0; start <= end;) {
        const std::size_t separator = std::min(text.find_first_of("/\\", start), end);
        parts.push_back(text.substr(start, separator - start));
        start = separator + 1;
    }
    for (const std::string& part : parts)
        if (part.empty() || part == "." || part == "..")
            throw platformError(operation, text, winrt::result::invalidArgument,
                                "The name does not stay inside its folder.");
    return parts;
}

void makeFolder(const fs::path& path) {
    if (::mkdir(path.c_str(), 0777) == 0)
        return;
    const int error = errno;
    std::error_code ignored;
    if (error != EEXIST || !std::filesystem::is_directory(path, ignored))
        throw errnoError("mkdir", path.native(), error);
}

/// The path of that name below the folder; the folders between are made.
fs::path pathBelow(const fs::path& folder, std::string_view operation, const std::u16string& name) {
    const std::vector<std::string> parts = splitName(operation, name);
    fs::path path = folder;
    for (std::size_t i = 0; i + 1 < parts.size(); ++i) {
        path /= parts[i];
        makeFolder(path);
    }
    return path / parts.back();
}

/// Calls `create` with "name", "name (2)", ... until it no longer says that the name is taken.
fs::path withUniqueName(const fs::path& wanted, const std::function<bool(const fs::path&)>& create) {
    fs::path path = wanted;
    for (unsigned number = 2; !create(path); ++number)
        path.replace_filename(wanted.stem().native() + " (" + std::to_string(number) + ")" +
                              wanted.extension().native());
    return path;
}

/// Makes the file; false if the name is taken, which `exclusive` asks for.
bool createFile(const fs::path& path, bool exclusive) {
    const int flags = O_RDWR | O_CREAT | O_CLOEXEC | (exclusive ? O_EXCL : 0);
    const FileDescriptor file(::open(path.c_str(), flags, 0666));
    if (!file.isOpen() && !(exclusive && errno == EEXIST))
        throw errnoError("open", path.native(), errno);
    return file.isOpen();
}

bool createNewFolder(const fs::path& path) {
    if (::mkdir(path.c_str(), 0777) == 0)
        return true;
    if (errno != EEXIST)
        throw errnoError("mkdir", path.native(), errno);
    return false;
}

class LocalFolder final : public IStorageFolder {
public:
    LocalFolder(std::shared_ptr<WorkerPool> pool, fs::path path) : _pool(std::move(pool)), _path(std::move(path)) {}

    std::u16string Path() const override { return textOf(_path); }
    IAsyncOperation<StorageFolder> CreateFolderAsync(const std::u16string& name,
                                                     CreationCollisionOption option) override;
    IAsyncOperation<StorageFile> CreateFileAsync(const std::u16string& name, CreationCollisionOption option) override;

private:
    const std::shared_ptr<WorkerPool> _pool;
    const fs::path _path;
};

class LocalFile final : public IStorageFile {
public:
    LocalFile(std::shared_ptr<WorkerPool> pool, fs::path path) : _pool(std::move(pool)), _path(std::move(path)) {}

    std::u16string Path() const override { return textOf(_path); }

    IAsyncOperation<RandomAccessStream> OpenAsync(FileAccessMode mode) override {
        return runAsync<RandomAccessStream>(_pool, [path = _path, mode]() -> RandomAccessStream {
            const int flags = (mode == FileAccessMode::Read ? O_RDONLY : O_RDWR) | O_CLOEXEC;
            FileDescriptor file(::open(path.c_str(), flags));
            if (!file.isOpen())
                throw errnoError("open", path.native(), errno);
            return std::make_shared<FileStream>(std::move(file), path.native());
        });
    }

    IAsyncOperation<StorageFolder> GetParentAsync() override {
        return runAsync<StorageFolder>(_pool, [pool = _pool, path = _path]() -> StorageFolder {
            return std::make_shared<LocalFolder>(pool, path.parent_path());
        });
    }

private:
    const std::shared_ptr<WorkerPool> _pool;
    const fs::path _path;
};

IAsyncOperation<StorageFolder> LocalFolder::CreateFolderAsync(const std::u16string& name,
                                                              CreationCollisionOption option) {
    return runAsync<StorageFolder>(_pool, [pool = _pool, folder = _path, name, option]() -> StorageFolder {
        auto path = pathBelow(folder, "CreateFolderAsync", name);
        if (option == CreationCollisionOption::OpenIfExists)
            makeFolder(path);
        else
            path = withUniqueName(path, createNewFolder);
        return std::make_shared<LocalFolder>(pool, path);
    });
}

IAsyncOperation<StorageFile> LocalFolder::CreateFileAsync(const std::u16string& name, CreationCollisionOption option) {
    return runAsync<StorageFile>(_pool, [pool = _pool, folder = _path, name, option]() -> StorageFile {
        auto path = pathBelow(folder, "CreateFileAsync", name);
        if (option == CreationCollisionOption::OpenIfExists)
            createFile(path, false);
        else
            path = withUniqueName(path, [](const auto& candidate) { return createFile(candidate, true); });
        return std::make_shared<LocalFile>(pool, path);
    });
}

} // namespace

IAsyncOperation<StorageFile> getFileFromPathAsync(const std::shared_ptr<WorkerPool>& pool, const std::u16string& path) {
    return runAsync<StorageFile>(pool, [pool, path]() -> StorageFile {
        constexpr std::string_view operation = "GetFileFromPathAsync";
        const fs::path file = requirePathText(operation, path);
        if (!file.is_absolute())
            throw platformError(operation, file.native(), winrt::result::invalidArgument, "The path is not absolute.");
        struct stat status{};
        if (::stat(file.c_str(), &status) != 0)
            throw errnoError("stat", file.native(), errno);
        if (S_ISDIR(status.st_mode))
            throw errnoError(operation, file.native(), EISDIR);
        return std::make_shared<LocalFile>(pool, file);
    });
}

} // namespace Platform::Shared
