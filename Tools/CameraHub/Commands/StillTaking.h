#pragma once

#include "Tools/CameraHub/Commands/Session.h"

#include <CameraHubClient/CameraHubClient.h>
#include <json/value.h>

#include <chrono>
#include <optional>
#include <string>
#include <variant>

namespace CommandLine {

/// What capture and bracket have in common: one camera, of which stills are taken over one connection.
class StillTaking {
public:
    /// Connects and chooses the camera. Throws what CameraHubClient throws, and NoSuchCamera.
    StillTaking(const Session& session, const std::string& wantedCamera, std::chrono::milliseconds settle);

    const CameraHub::Camera& camera() const { return _camera; }

    /// Shows meanwhile what is being waited for; notes where a still had to be taken twice. Throws Failure where the
    /// camera fails, besides what CameraHubClient throws.
    CameraHub::Still take(std::variant<std::chrono::microseconds, CameraHub::Percent> exposure);

private:
    const Session& _session;
    CameraHub::CameraHubClient _client;
    CameraHub::Camera _camera;
    std::chrono::milliseconds _settle;
    bool _hasTaken = false;
};

/// The members that Docs/command-line.md tells of a still; null for an exposure that is not known.
Json::Value stillAsJson(const CameraHub::Still& still, const std::string& file);

/// What differs from what was asked for; empty where nothing does. `asked` is none where no time was.
std::string exposureNote(std::optional<std::chrono::microseconds> asked,
                         std::optional<std::chrono::microseconds> inForce);

} // namespace CommandLine
