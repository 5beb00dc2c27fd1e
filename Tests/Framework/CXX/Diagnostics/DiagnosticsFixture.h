#pragma once

#include "Framework/CXX/Diagnostics/HaldenDiagnostics.h"
#include "Tests/Support/ScopedEnvironment.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

inline const std::string testAppName = "Larkspur Windows Camera Hub";
inline const std::string testVersion = "2.9";

/// Data folders of its own for each test, and a process without any logging configuration at the end.
class DiagnosticsFixture : public testing::Test {
protected:
    DiagnosticsFixture();
    ~DiagnosticsFixture() override;

    const std::filesystem::path& root() const { return _folder.path(); }
    std::filesystem::path common() const { return root() / "common"; }
    std::filesystem::path local() const { return root() / "local"; }

    /// The folder of the application's data below the common and the local data folder.
    std::filesystem::path appFolder() const {
        return common() / "Halden Imaging Group" / (testAppName + " " + testVersion);
    }
    std::filesystem::path localAppFolder() const;
    std::filesystem::path propertiesFile() const { return appFolder() / "logging.properties"; }
    std::filesystem::path allRuns() const { return appFolder() / "Diagnostics"; }

    /// What createDiagnostics makes, with room for ten runs.
    static std::unique_ptr<HaldenDiagnostics> makeDiagnostics(int keepCount = 10);

    std::set<std::string> runNames() const;

    /// Makes a run folder; whatever is made afterwards is younger by its time of creation.
    void makeRunFolder(const std::string& name) const;

    /// A folder that a client has prepared for redirection.
    std::filesystem::path makeRedirectFolder(const std::string& name) const;

    /// The files below the folder that this process has open.
    std::set<std::string> openFiles() const;

private:
    TemporaryFolder _folder;
    ScopedEnvironment _common{"CAMERA_HUB_COMMON_DATA", common()};
    ScopedEnvironment _local{"CAMERA_HUB_LOCAL_DATA", local()};
    ScopedEnvironment _logs{"LARKSPURWINDOWSCAMERAHUB_LOG_DIR", std::nullopt};
};
