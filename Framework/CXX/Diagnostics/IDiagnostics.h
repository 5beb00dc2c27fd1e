#pragma once

#include <filesystem>
#include <string>

namespace Halden {

/// What a run leaves on disk: its folders and its traces. Folders are UTF-16, ids and names of traces UTF-8.
/// A HaldenException with the text "Invalid diagnostics" is thrown by what needs folders that are not there.
/// Any thread.
class IDiagnostics {
public:
    virtual std::u16string getDiagnosticsFolder() = 0;
    virtual std::u16string getRunFolder() = 0;

    /// The folder for a trace's data. Needs the folder of the traces alone.
    virtual std::filesystem::path getDataFolder(const std::string& traceId) = 0;
    virtual std::u16string getCurrentDataFolder() = 0;

    /// Empty if there is none.
    virtual std::string getDefaultTraceId() = 0;
    virtual std::string getCurrentTraceId() = 0;
    virtual void setCurrentTrace(const std::string& traceId) = 0;

    /// Makes the folders of a new trace; returns its id, which is the name and the local time. Throws the file
    /// system's errors.
    virtual std::string createTrace(const std::string& name) = 0;

    virtual ~IDiagnostics() = default;
};

} // namespace Halden
