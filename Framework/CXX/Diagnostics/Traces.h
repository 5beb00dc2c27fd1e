#pragma once

#include "Framework/CXX/Diagnostics/DiagnosticsFolders.h"
#include "Framework/CXX/Diagnostics/IFileSystem.h"

#include <filesystem>
#include <mutex>
#include <string>

/// The traces of a run: named folders, each with one for its data, of which one is the current trace's. All of it
/// throws the file system's errors. Any thread.
class Traces {
public:
    /// Both have to outlive the object. Once logging is initialised it alone writes the folders' fields of the default
    /// and the current trace.
    Traces(DiagnosticsFolders& folders, const IFileSystem& fileSystem);

    /// Makes the folders of a new trace; returns its id, which is the name and the local time.
    std::string create(const std::string& name);

    /// Makes the trace of everything that belongs to no other, and makes it the current one. Before anything else.
    void createDefault();
    void setCurrent(const std::string& id);

    std::string defaultId() const;
    std::string currentId() const;
    std::u16string currentDataFolder() const;
    std::u16string currentFolder() const;
    std::u16string folder(const std::string& id) const;

    /// Throws a HaldenException if the folder of the traces is not there.
    std::filesystem::path dataFolder(const std::string& id) const;

    /// Make a folder below the current trace's data, or below a trace, and return it.
    std::u16string createCurrentDataSubfolder(const std::u16string& relativePath);
    std::u16string createSubfolder(const std::string& id, const std::u16string& relativePath);

private:
    DiagnosticsFolders& _folders;
    const IFileSystem& _fileSystem;
    mutable std::mutex _mutex; // guards the current trace, and the making of a trace's data folder
};

/// The id as texts show it.
std::string formatTraceId(const std::string& id);
