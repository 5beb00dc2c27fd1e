#include "Platform/Imaging/PngEncoder.h"

#include "Platform/Imaging/ImagingError.h"
#include "Platform/Imaging/Png/PngWriter.h"

#include <algorithm>
#include <cstddef>

namespace Platform::Imaging {
namespace {

class ImageRows final : public PictureRows {
public:
    explicit ImageRows(const RgbImage& image) : PictureRows({image.width, image.height}), _next(image.pixels.data()) {}

    void read(std::uint8_t* row) override {
        const std::size_t samples = std::size_t{3} * size().width;
        std::copy_n(_next, samples, row);
        _next += samples;
    }

private:
    const std::uint8_t* _next;
};

} // namespace

std::vector<std::uint8_t> encodePng(const RgbImage& image) {
    requirePixels(image, "PNG");
    ImageRows rows(image);
    return encodePng(rows);
}

std::vector<std::uint8_t> encodePng(PictureRows& rows, const Png::RunBeside& runBeside) {
    const auto [width, height] = rows.size();
    requireSizeWithinLimits(width, height, "PNG");
    Png::PngWriter writer(width, height, runBeside);
    for (std::uint32_t y = 0; y < height; ++y) {
        rows.read(writer.nextRow().data());
        writer.writeRow();
    }
    return writer.takeFile();
}

} // namespace Platform::Imaging
