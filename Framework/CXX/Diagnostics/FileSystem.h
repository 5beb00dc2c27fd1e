#pragma once

#include "Framework/CXX/Diagnostics/IFileSystem.h"

/// The machine's file system. Error codes are errno. Any thread.
class FileSystem final : public IFileSystem {
public:
    bool create_directory(const std::u16string& path) const override;
    bool exists(const std::u16string& path) const override;
};

/// The one that is used wherever no other is given.
const FileSystem& defaultFileSystem();
