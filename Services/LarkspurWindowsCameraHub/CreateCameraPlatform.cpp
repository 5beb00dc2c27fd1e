#include "Services/LarkspurWindowsCameraHub/CreateCameraPlatform.h"

#include "Framework/CXX/Common/TextConversion.h"
#include "Framework/CXX/System/EnvironmentVariable.h"
#include "Platform/Simulated/SimulatedPlatform.h"
#include "Platform/V4l2/V4l2Platform.h"

#include <string>

std::shared_ptr<Platform::CameraPlatform> createCameraPlatform() {
    const std::string name = Halden::System::environmentVariableOr("CAMERA_HUB_PLATFORM", "v4l2");
    if (name == "v4l2")
        return Platform::V4l2::createV4l2Platform();
    if (name == "simulated")
        return Platform::Simulated::createSimulatedPlatform(
            Halden::System::environmentVariableOr("CAMERA_HUB_SIMULATION", ""));
    throw winrt::hresult_error(winrt::result::invalidArgument, u"CAMERA_HUB_PLATFORM asks for the camera platform \"" +
                                                                   Halden::toUtf16(name) +
                                                                   u"\", which there is not. Known: v4l2, simulated.");
}
