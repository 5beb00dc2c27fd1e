#include "Platform/Simulated/Picture/SceneRenderer.h"

#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Imaging/ImageScaler.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Platform/Simulated/Picture/SceneExposure.h"
#include "Platform/Simulated/Picture/TestChart.h"
#include "Platform/Simulated/Scenario/FileText.h"

#include <cstdint>
#include <string>
#include <system_error>

namespace Platform::Simulated {
namespace {

Imaging::RgbImage readPicture(const std::filesystem::path& file) {
    const std::string bytes = readFileText(file, longestPicture);
    return Imaging::decodeImage({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

} // namespace

const Imaging::RgbImage& SceneRenderer::sceneFor(const Key& key) {
    if (key == _key)
        return _scene;
    _key = {}; // what follows may raise
    if (key.picture.empty())
        _scene = drawTestChart(key.width, key.height);
    else
        _scene = Imaging::scaleTo(readPicture(key.picture), key.width, key.height);
    _key = key;
    return _scene;
}

std::vector<std::uint8_t> SceneRenderer::renderPng(const CaptureDefinition& capture, std::uint32_t width,
                                                   std::uint32_t height, const ChartCaption& caption) {
    Key key{capture.picture, {}, width, height};
    std::error_code missing; // reading the picture then reports it
    if (!capture.picture.empty())
        key.changed = std::filesystem::last_write_time(capture.picture, missing);
    Imaging::RgbImage still = sceneFor(key);
    if (caption.exposureExponent)
        expose(still, *caption.exposureExponent - capture.neutralExposure);
    if (capture.picture.empty())
        drawCaption(still, caption);
    return Imaging::encodePng(still);
}

} // namespace Platform::Simulated
