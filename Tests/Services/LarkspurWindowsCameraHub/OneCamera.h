#pragma once

#include "Services/LarkspurWindowsCameraHub/CameraServer.h"
#include "Services/LarkspurWindowsCameraHub/FoundCamera.h"
#include "Tests/Support/SimulatedHub.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// The group "G" of one colour preview source "S", 32x24, of the device "D", whose name is "Cam", as members of
/// a scenario. `camera` is the device's object under "cameras"; `more` are further members.
std::string oneCamera(const std::string& camera, const std::string& more = {});

/// A group of one such source for each device; the group of "D" is "G-D". `camera` is the object of each.
std::string severalCameras(const std::vector<std::string>& devices, const std::string& camera);

/// A group "G" with those sources, written as in a scenario, of the device "D".
std::string sourcesOf(const std::vector<std::string>& sources);

/// A source of the device "D", 32x24.
std::string source(const std::string& id, const std::string& streamType, const std::string& kind = "Color");

/// The device's object of a camera with that control, from 2^-13 s to 1 s in whole stops, and without any other.
/// `more` are further members of the control.
std::string olderExposure(const std::string& more = {});

/// That object with those further members.
std::string withMembers(const std::string& object, const std::string& members);

/// A fault's member for "faults", of the code -7.
std::string fault(const std::string& operation, const std::string& members = {});

/// `withMembers` of a camera's object with those faults.
std::string withFaults(const std::string& camera, const std::string& faults);

/// Tests on cameras that are opened without being searched for.
class OneCamera : public SimulatedHub {
protected:
    /// The record of the device of that id, named "Cam".
    static FoundCamera found(const std::string& uid = "D");

    /// Takes all cameras away, and returns when an open capture of "D" knows.
    void unplug();

    std::vector<std::string> deviceLines() const { return lines("LarkspurWindowsCameraHub.Device"); }

    /// The journal, one text a line: "DEVICE: CALL CONTROL ARGUMENTS", and behind it "ended", "= RESULT" and
    /// "! ERROR" where the line has them.
    std::vector<std::string> journalTexts() const;

    /// Empties the log and the clock; `news` is what the journal has from then on.
    void forget();
    std::vector<std::string> news() const;

    /// How many times that call stands in the journal, its ends left out.
    std::size_t timesCalled(const std::string& call) const { return callsOf(call).size(); }

    /// The clock from now on has its time limits shortened by that divisor.
    static std::shared_ptr<FakeClock> shortenTimeLimits(int divisor);

private:
    std::size_t _linesForgotten = 0;
};

/// Tests on cameras that the camera service has found.
class ServedCameras : public OneCamera {
protected:
    /// Starts the service on that scenario and forgets the search for its cameras.
    void start(const std::string& scenario, std::size_t cameras = 1);

    /// The service on one camera.
    void startOne(const std::string& camera = olderExposure()) { start(oneCamera(camera)); }

    /// Waits until the service knows that many; false if it never does.
    bool waitForCameras(std::size_t count) const;

    std::shared_ptr<CameraServer> server;
};
