#pragma once

#include "Platform/Interface/AsyncOperation.h"
#include "Platform/Interface/RandomAccessStream.h"

#include <memory>
#include <string>

namespace Platform {

/// What happens if the name to be made is taken: a number is added to it ("name (2).png"), or what is there is opened.
enum class CreationCollisionOption { GenerateUniqueName = 0, OpenIfExists = 3 };

/// What a stream of a file is for: a Read stream raises fail when it is written.
enum class FileAccessMode { Read = 0, ReadWrite = 1 };

class IStorageFolder;
using StorageFolder = std::shared_ptr<IStorageFolder>;

/// A file on disk, by its path: it may have gone meanwhile. Any thread.
class IStorageFile {
public:
    virtual ~IStorageFile() = default;

    /// Absolute. Raises nothing.
    virtual std::u16string Path() const = 0;

    /// A stream of its own, at the file's beginning; never null. ReadWrite does not empty the file. Fails with notFound
    /// and accessDenied.
    virtual IAsyncOperation<RandomAccessStream> OpenAsync(FileAccessMode mode) = 0;

    /// The folder that the path names; whether it is there shows at its use.
    virtual IAsyncOperation<StorageFolder> GetParentAsync() = 0;
};
using StorageFile = std::shared_ptr<IStorageFile>;

/// A folder on disk, by its path. Any thread.
///
/// Names may have separators, "/" and "\", within them and at their end: they then name something below the folder,
/// and the folders between are made. Nothing outside the folder can be named: "", ".", "..", an absolute path and text
/// that is not well-formed fail with invalidArgument.
class IStorageFolder {
public:
    virtual ~IStorageFolder() = default;

    /// Absolute. Raises nothing.
    virtual std::u16string Path() const = 0;

    /// The new folder, or with OpenIfExists the one that is there. Fails with notFound and accessDenied.
    virtual IAsyncOperation<StorageFolder> CreateFolderAsync(const std::u16string& name,
                                                             CreationCollisionOption option) = 0;

    /// The new file, empty, or with OpenIfExists the one that is there, as it is. Fails with notFound and accessDenied.
    virtual IAsyncOperation<StorageFile> CreateFileAsync(const std::u16string& name,
                                                         CreationCollisionOption option) = 0;
};

} // namespace Platform
