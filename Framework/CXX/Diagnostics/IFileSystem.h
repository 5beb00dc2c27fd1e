#pragma once

#include <string>

/// What the diagnostics ask of a file system. Paths are UTF-16. Its users never own it. Any thread.
class IFileSystem {
public:
    /// Makes this one folder, without parents. False if it is there already; any failure is a
    /// std::filesystem::filesystem_error.
    virtual bool create_directory(const std::u16string& path) const = 0;

    /// Whether something has this name, a broken link included. Failures to tell are a
    /// std::filesystem::filesystem_error.
    virtual bool exists(const std::u16string& path) const = 0;

protected:
    ~IFileSystem() = default;
};
