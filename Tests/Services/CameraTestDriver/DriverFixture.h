#pragma once

#include "Platform/Interface/MediaCapture.h"
#include "Services/CameraTestDriver/DriverConnection.h"
#include "Tests/Services/CameraTestDriver/TypedConsole.h"
#include "Tests/Support/FakeClock.h"
#include "Tests/Support/RaisedError.h"
#include "Tests/Support/ScenarioFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// A group of one colour source whose device has that id and name and one profile, in JSON. `members` are
/// more members of the source.
std::string cameraGroup(const std::string& id, const std::string& name, int width = 64, int height = 48,
                        const std::string& members = "");

/// The driver on simulated cameras, with a clock that does not wait. No picture has been taken.
class DriverFixture : public testing::Test {
protected:
    DriverFixture();
    ~DriverFixture() override;

    /// The cameras from now on; members of a scenario object, without its braces.
    void useScenario(const std::string& members);

    /// One camera, "cam", called cameraName(), whose hardware is that JSON object.
    void useCamera(const std::string& hardware, int width = 64, int height = 48);

    DriverConnection connectionTo(const std::string& id, const std::string& name = "Test Camera");
    Platform::MediaCapture openCamera() { return connectionTo("cam").mediaCapture; }

    /// What the whole driver writes when a person types that and it leaves.
    std::string session(const std::string& typed);

    /// With "{1}", "{2}" for the ids of pictures in the order in which they come up, "FOLDER" for the
    /// executable's folder and "Test Camera" for this test's camera.
    std::string plain(std::string text) const;

    /// Every call so far that changed something, "call control arguments".
    std::vector<std::string> changes() const;

    /// The journal's lines of that name, as "arguments".
    std::vector<std::string> calls(const std::string& name) const;

    /// A name that no other test uses, as the driver makes a folder of that name.
    std::string cameraName() const;

    static std::filesystem::path executableFolder();
    std::filesystem::path outputFolder() const { return executableFolder() / cameraName(); }

    /// The names of the files there, in order.
    static std::vector<std::string> filesIn(const std::filesystem::path& folder);

    FakeClock& clock() { return *_clock; }

private:
    const ScenarioFile _scenario;
    const std::shared_ptr<FakeClock> _clock = std::make_shared<FakeClock>();
    const ScopedClock _scopedClock{_clock};
};
