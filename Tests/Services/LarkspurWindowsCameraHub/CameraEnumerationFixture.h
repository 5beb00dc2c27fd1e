#pragma once

#include "Framework/CXX/Common/TextConversion.h"
#include "Platform/Shared/DeviceInformationValue.h"
#include "Services/LarkspurWindowsCameraHub/CameraEnumeration.h"
#include "Services/LarkspurWindowsCameraHub/PavoCameraClient.h"
#include "Tests/Services/LarkspurWindowsCameraHub/ScriptedWatcher.h"
#include "Tests/Support/AlteredPlatform.h"
#include "Tests/Support/SimulatedHub.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

/// The cameras that the hub finds, on scripted watcher events or on a simulated platform.
class CameraEnumerationFixture : public SimulatedHub {
protected:
    using Lines = std::vector<std::string>;

    void start() {
        enumeration = std::make_shared<CameraEnumeration>();
        enumeration->initialize();
    }

    /// As start, on those cameras, with events that the test reports itself.
    void startScripted(const std::string& members) {
        useScenario(members);
        watcher = std::make_shared<ScriptedWatcher>();
        AlteredPlatform::install()->watcher = watcher;
        start();
    }

    Lines uids() const {
        Lines found;
        for (const auto& [uid, camera] : enumeration->getCameras())
            found.push_back(uid);
        return found;
    }

    CameraDescription description(const std::string& uid) const {
        return enumeration->getCameras().at(uid).description;
    }

    bool waitForUids(const Lines& expected) const {
        return waitUntil([&] { return uids() == expected; });
    }
    bool waitForLine(const std::string& line) const {
        return waitUntil([&] {
            const Lines all = lines();
            return std::find(all.begin(), all.end(), line) != all.end();
        });
    }

    /// The reply to a client that asks for the cameras, as soon as there are any.
    static std::string discovered(PavoCameraClient& client) {
        std::string reply;
        waitUntil([&] {
            reply = client.messageHandler(R"({"id":1,"method":"camera:discover"})");
            return reply.find("\"uid\"") != std::string::npos;
        });
        return reply;
    }

    /// A group of one colour source in JSON, reported as the device `watched`; `members` are more members of the
    /// source's device.
    static std::string group(const std::string& device, int width = 16, const std::string& watched = "",
                             const std::string& members = "") {
        const std::string reported = watched.empty() ? device : watched;
        return R"({"id": "group of )" + reported + R"(", "watched": {"id": ")" + reported +
               R"("}, "sources": [{"id": "S", "device": {"id": ")" + device + R"(", "name": "Camera")" + members +
               R"(}, "profiles": [{"width": )" + std::to_string(width) + R"(, "height": 12}]}]})";
    }

    static std::string groups(const std::string& list) { return R"("groups": [)" + list + "]"; }

    static Platform::DeviceInformationUpdate updateOf(const std::string& id,
                                                      const Platform::PropertyMap& properties = {}) {
        return std::make_shared<Platform::Shared::DeviceInformationUpdateValue>(Halden::toUtf16(id), properties);
    }

    std::shared_ptr<ScriptedWatcher> watcher;
    std::shared_ptr<CameraEnumeration> enumeration;
};
