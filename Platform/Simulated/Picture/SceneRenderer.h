#pragma once

#include "Platform/Imaging/Png/RunBeside.h"
#include "Platform/Imaging/RgbImage.h"
#include "Platform/Simulated/Picture/ChartCaption.h"
#include "Platform/Simulated/Scenario/Scenario.h"

#include <cstdint>
#include <filesystem>
#include <vector>

namespace Platform::Simulated {

/// Makes the stills of one camera. Keeps the scene at the size that it was last asked for, so that a
/// still costs no drawing and no scaling. One thread at a time.
class SceneRenderer {
public:
    /// The PNG of one still of that size. The exposure is that of the caption, which itself stands on the test
    /// chart alone; without one the scene is shown as it is. Raises winrt::hresult_error.
    std::vector<std::uint8_t> renderPng(const CaptureDefinition& capture, std::uint32_t width, std::uint32_t height,
                                        const ChartCaption& caption, const Imaging::Png::RunBeside& runBeside);

private:
    /// What the kept scene was made from.
    struct Key {
        std::filesystem::path picture;
        std::filesystem::file_time_type changed;
        std::uint32_t width = 0;
        std::uint32_t height = 0;

        bool operator==(const Key&) const = default;
    };

    const Imaging::RgbImage& sceneFor(const Key& key);

    Key _key;
    Imaging::RgbImage _scene;
};

} // namespace Platform::Simulated
