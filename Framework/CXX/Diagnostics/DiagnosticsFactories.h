#pragma once

#include "Framework/CXX/Diagnostics/HaldenDiagnostics.h"

#include <memory>
#include <string>

// Neither of these throws: null is a failure. All text is UTF-8, a null file system the default one.

/// For an ordinary run: makes its folders and its default trace, and keeps at most that many run folders.
std::unique_ptr<HaldenDiagnostics> createDiagnostics(const std::string& appName, const std::string& version,
                                                     int keepCount, const IFileSystem* fileSystem) noexcept;

/// For a run whose output goes below a folder of somebody's choice. The folders must be there already: the redirect
/// folder lies under one named "Diagnostics" and holds one with the application's name without blanks, which holds
/// "logs" and "Traces". Nothing is made, nothing is removed.
std::unique_ptr<HaldenDiagnostics> createRedirectedDiagnostics(const std::string& appName, const std::string& version,
                                                               const std::string& redirectFolder,
                                                               const IFileSystem* fileSystem) noexcept;
