#pragma once

#include "Platform/Interface/Storage.h"
#include "Platform/Shared/WorkerPool.h"

#include <memory>
#include <string>

namespace Platform::Shared {

/// The file of that absolute path on the local file system. Fails for a relative path, for one where
/// nothing is and for one of a folder.
///
/// Names of new files and folders may have separators, "/" and "\", within them and at their end: they
/// then name something below the folder, and the folders between are made. Refused are names of
/// nothing, ".", "..", and ones that are not well-formed text. A name that is taken becomes
/// "name (2).png", "name (3).png" and so on with GenerateUniqueName.
IAsyncOperation<StorageFile> getFileFromPathAsync(const std::shared_ptr<WorkerPool>& pool, const std::u16string& path);

} // namespace Platform::Shared
