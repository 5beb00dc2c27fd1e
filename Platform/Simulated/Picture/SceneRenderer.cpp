#include "Platform/Simulated/Picture/SceneRenderer.h"

#include "Platform/Imaging/ImageDecoder.h"
#include "Platform/Imaging/ImageScaler.h"
#include "Platform/Imaging/PictureRows.h"
#include "Platform/Imaging/PngEncoder.h"
#include "Platform/Simulated/Picture/SceneExposure.h"
#include "Platform/Simulated/Picture/TestChart.h"
#include "Platform/Simulated/Scenario/FileText.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <system_error>

namespace Platform::Simulated {
namespace {

Imaging::RgbImage readPicture(const std::filesystem::path& file) {
    const std::string bytes = readFileText(file, longestPicture);
    return Imaging::decodeImage({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

/// A scene as it is exposed, and a caption over its lowest rows.
class StillRows final : public Imaging::PictureRows {
public:
    StillRows(const Imaging::RgbImage& scene, const SceneExposure& exposure, const Imaging::RgbImage& caption)
        : PictureRows({scene.width, scene.height}), _scene(scene), _exposure(exposure), _caption(caption) {}

    void read(std::uint8_t* row) override {
        const std::uint32_t captionRow = _scene.height - _caption.height;
        if (_next < captionRow) {
            std::memcpy(row, _scene.pixels.data() + _next * _rowSize, _rowSize);
            _exposure.apply({row, _rowSize});
        } else {
            std::memcpy(row, _caption.pixels.data() + (_next - captionRow) * _rowSize, _rowSize);
        }
        ++_next;
    }

private:
    const Imaging::RgbImage& _scene;
    const SceneExposure& _exposure;
    const Imaging::RgbImage& _caption;
    const std::size_t _rowSize = std::size_t{3} * _scene.width; // bytes
    std::uint32_t _next = 0;
};

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
                                                   std::uint32_t height, const ChartCaption& caption,
                                                   const Imaging::Png::RunBeside& runBeside) {
    Key key{capture.picture, {}, width, height};
    std::error_code missing; // reading the picture then reports it
    if (!capture.picture.empty())
        key.changed = std::filesystem::last_write_time(capture.picture, missing);
    const Imaging::RgbImage& scene = sceneFor(key);
    const SceneExposure exposure(caption.exposureExponent ? *caption.exposureExponent - capture.neutralExposure : 0);
    const auto strip = capture.picture.empty() ? drawCaption(width, height, caption) : Imaging::RgbImage{};
    StillRows rows(scene, exposure, strip);
    return Imaging::encodePng(rows, runBeside);
}

} // namespace Platform::Simulated
