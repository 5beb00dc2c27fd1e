#include "Services/LarkspurWindowsCameraHub/CameraServer.h"

#include "Platform/Interface/Guid.h"
#include "Platform/Interface/HresultError.h"
#include "Services/LarkspurWindowsCameraHub/CameraEnumeration.h"
#include "Services/LarkspurWindowsCameraHub/ConnectedCameraMap.h"
#include "Services/LarkspurWindowsCameraHub/Exceptions.h"
#include "Services/LarkspurWindowsCameraHubNonUWP/ServiceDiagnosticsAndLogging.h"

#include <cassert>
#include <cstdint>
#include <map>
#include <mutex>
#include <utility>

using Halden::LarkspurWindowsCameraHub::Exceptions::RedirectDiagnosticsFailed;
using Halden::LarkspurWindowsCameraHub::Exceptions::winrtExceptionWrapper;
using std::chrono::microseconds;
using std::chrono::milliseconds;

namespace {

constexpr microseconds defaultExposure{50000};
constexpr int noClient = -1;

/// A new identifier's text without its braces.
std::string newImageId() {
    const std::string text = Platform::guidToText(Platform::GuidHelper::CreateNewGuid());
    return text.substr(1, text.size() - 2);
}

} // namespace

class CameraServer::impl {
public:
    impl() { cameraEnumeration->initialize(); }

    std::vector<CameraDescription> discover() const;
    std::shared_ptr<const std::string> textOfCameras(const std::function<std::string()>& write);
    std::shared_ptr<ConnectedCamera> getCamera(const std::string& uid);
    CaptureResult captureImage(std::shared_ptr<ConnectedCamera> camera, int exposureInUs, int percentSelector,
                               double percent, int exposureChangeDelayInMs);
    SharedBytes shareImage(const std::string& id) const;
    void redirectDiagnostics(int client, const std::string& path);
    void cancelRedirectDiagnostics(int client);

private:
    static microseconds setExposure(ConnectedCamera& camera, int exposureInUs, int percentSelector, double percent,
                                    milliseconds delay);
    std::string storeImage(std::vector<unsigned char> bytes);

    int redirectClientId = noClient; // whose redirection of the diagnostics is in force
    std::shared_ptr<CameraEnumeration> cameraEnumeration = std::make_shared<CameraEnumeration>();
    ConnectedCameraMap connectedCameras;
    std::shared_ptr<const std::string> text; // of the cameras at textRevision; null at first
    std::uint64_t textRevision = 0;
    mutable std::mutex imagesMutex;            // guards images
    std::map<std::string, SharedBytes> images; // none is null
};

std::vector<CameraDescription> CameraServer::impl::discover() const {
    std::vector<CameraDescription> descriptions;
    for (const auto& [uid, camera] : cameraEnumeration->getCameras())
        descriptions.push_back(camera.description);
    return descriptions;
}

std::shared_ptr<const std::string> CameraServer::impl::textOfCameras(const std::function<std::string()>& write) {
    const std::uint64_t revision = cameraEnumeration->revision(); // before the cameras: they may change in between
    if (!text || revision != textRevision) {
        text = std::make_shared<const std::string>(write());
        textRevision = revision;
    }
    return text;
}

std::shared_ptr<ConnectedCamera> CameraServer::impl::getCamera(const std::string& uid) {
    auto open = connectedCameras.find(uid);
    const auto known = cameraEnumeration->getCameras();
    const auto found = known.find(uid);
    if (found == known.end()) {
        LOG4CXX_ERROR(serviceLogger(), "There is no known " << uid);
        return nullptr;
    }
    if (open)
        return open;
    auto camera = connectedCameras.getOrCreate(uid, found->second);
    camera->enableAndConvergeAuto(true, true, true);
    return camera;
}

CameraServer::CaptureResult CameraServer::impl::captureImage(std::shared_ptr<ConnectedCamera> camera, int exposureInUs,
                                                             int percentSelector, double percent,
                                                             int exposureChangeDelayInMs) {
    try {
        CaptureResult result;
        result.exposure =
            setExposure(*camera, exposureInUs, percentSelector, percent, milliseconds(exposureChangeDelayInMs));
        LOG4CXX_DEBUG(serviceLogger(), "capturing photo");
        auto bytes = camera->capturePhotoAsRawPNG();
        LOG4CXX_DEBUG(serviceLogger(), "capturing photo -- done");
        result.imageId = storeImage(std::move(bytes));
        return result;
    } catch (const winrt::hresult_error& error) {
        throw winrtExceptionWrapper(u"captureImage failed", error.message(), error.code());
    }
}

/// A failure to set the exposure does not keep the still from being taken.
microseconds CameraServer::impl::setExposure(ConnectedCamera& camera, int exposureInUs, int percentSelector,
                                             double percent, milliseconds delay) {
    if (exposureInUs != 0) {
        LOG4CXX_DEBUG(serviceLogger(), "setting exposure as us");
        return camera.setExposure(microseconds(exposureInUs), delay);
    }
    if (percentSelector != 0) {
        LOG4CXX_DEBUG(serviceLogger(), "setting exposure as percent");
        return camera.setExposureAsPercent(percent, delay);
    }
    LOG4CXX_ERROR(serviceLogger(), "No valid exposure parsed in captureImage JSON request.");
    assert(0);
    return camera.setExposure(defaultExposure, delay);
}

std::string CameraServer::impl::storeImage(std::vector<unsigned char> bytes) {
    std::string id = newImageId();
    auto image = std::make_shared<const std::vector<unsigned char>>(std::move(bytes));
    std::lock_guard lock(imagesMutex);
    images.clear();
    images.emplace(id, std::move(image));
    return id;
}

SharedBytes CameraServer::impl::shareImage(const std::string& id) const {
    std::lock_guard lock(imagesMutex);
    const auto image = images.find(id);
    return image == images.end() ? nullptr : image->second;
}

void CameraServer::impl::redirectDiagnostics(int client, const std::string& path) {
    LOG4CXX_INFO(serviceLogger(), "About to redirect diagnostics to: " << path);
    const std::string previous = getDiagnosticsFolderUtf8();
    if (initializeRedirectedDiagnosticsAndLogging(applicationName(), applicationVersion(), path)) {
        redirectClientId = client;
        LOG4CXX_INFO(serviceLogger(), "Successfully redirected diagnostics from: " << previous);
        return;
    }
    LOG4CXX_ERROR(serviceLogger(), "Failed redirecting diagnostics to: " << path);
    initializeDiagnosticsAndLogging(applicationName(), applicationVersion());
    throw RedirectDiagnosticsFailed(path);
}

void CameraServer::impl::cancelRedirectDiagnostics(int client) {
    if (client != redirectClientId)
        return;
    LOG4CXX_INFO(serviceLogger(), "Cancelling diagnostics redirection (likely due to client disconnection)");
    initializeDiagnosticsAndLogging(applicationName(), applicationVersion());
    redirectClientId = noClient;
    LOG4CXX_INFO(serviceLogger(), "Cancelled diagnostics redirection (likely due to client disconnection)");
}

CameraServer::CameraServer() : pimpl(std::make_unique<impl>()) {}

CameraServer::~CameraServer() = default;

std::vector<CameraDescription> CameraServer::discover() const { return pimpl->discover(); }

std::shared_ptr<const std::string> CameraServer::textOfCameras(const std::function<std::string()>& write) {
    return pimpl->textOfCameras(write);
}

std::shared_ptr<ConnectedCamera> CameraServer::getCamera(std::string uid) { return pimpl->getCamera(uid); }

CameraServer::CaptureResult CameraServer::captureImage(std::shared_ptr<ConnectedCamera> camera, int exposureInUs,
                                                       double exposureInPercent, int gainInPercent,
                                                       int exposureChangeDelayInMs) {
    if (!camera)
        return {};
    // The two per-cent values change places here: the request's exposureInPercent becomes the selector, its
    // gainInPercent the amount. Clients rely on it.
    const int percentSelector = static_cast<int>(exposureInPercent);
    const double percent = gainInPercent;
    return pimpl->captureImage(std::move(camera), exposureInUs, percentSelector, percent, exposureChangeDelayInMs);
}

std::vector<unsigned char> CameraServer::getImage(std::string id) const {
    const SharedBytes image = pimpl->shareImage(id);
    return image ? *image : std::vector<unsigned char>{};
}

SharedBytes CameraServer::shareImage(const std::string& id) const { return pimpl->shareImage(id); }

void CameraServer::redirectDiagnostics(int client, const std::string& path) {
    pimpl->redirectDiagnostics(client, path);
}

void CameraServer::cancelRedirectDiagnostics(int client) { pimpl->cancelRedirectDiagnostics(client); }
