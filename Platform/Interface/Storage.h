#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/RandomAccessStream.h"

#include <memory>
#include <string>

namespace Platform {

/// What happens if the name to be made is taken: a number is added to it, or what is there is opened.
enum class CreationCollisionOption { GenerateUniqueName = 0, OpenIfExists = 3 };

enum class FileAccessMode { Read = 0, ReadWrite = 1 };

class IStorageFolder;
using StorageFolder = std::shared_ptr<IStorageFolder>;

/// A file on disk. Any thread.
class IStorageFile {
public:
    virtual ~IStorageFile() = default;

    /// Absolute.
    virtual std::u16string Path() const = 0;
    virtual IAsyncOperation<RandomAccessStream> OpenAsync(FileAccessMode mode) = 0;
    virtual IAsyncOperation<StorageFolder> GetParentAsync() = 0;
};
using StorageFile = std::shared_ptr<IStorageFile>;

/// A folder on disk. A name with path separators within it stays inside the folder or is refused.
/// Any thread.
class IStorageFolder {
public:
    virtual ~IStorageFolder() = default;

    /// Absolute.
    virtual std::u16string Path() const = 0;
    virtual IAsyncOperation<StorageFolder> CreateFolderAsync(const std::u16string& name,
                                                             CreationCollisionOption option) = 0;
    virtual IAsyncOperation<StorageFile> CreateFileAsync(const std::u16string& name,
                                                         CreationCollisionOption option) = 0;
};

} // namespace Platform
