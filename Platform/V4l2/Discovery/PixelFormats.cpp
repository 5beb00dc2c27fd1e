#include "Platform/V4l2/Discovery/PixelFormats.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <array>

namespace Platform::V4l2 {
namespace {

using Imaging::FrameFormat;

// What a still of the format keeps of the scene.
constexpr int brightnessAlone = 0;
constexpr int rawMosaic = 1;
constexpr int compressed = 2;
constexpr int quarterColour = 3;
constexpr int halfColour = 4;
constexpr int fullColour = 5;

constexpr std::array formats = {PixelFormat{V4L2_PIX_FMT_GREY, FrameFormat::Grey, false, brightnessAlone},
                                PixelFormat{V4L2_PIX_FMT_SBGGR8, FrameFormat::BayerBg8, false, rawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SGBRG8, FrameFormat::BayerGb8, false, rawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SGRBG8, FrameFormat::BayerGr8, false, rawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SRGGB8, FrameFormat::BayerRg8, false, rawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SBGGR10, FrameFormat::BayerBg10, false, rawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SGBRG10, FrameFormat::BayerGb10, false, rawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SGRBG10, FrameFormat::BayerGr10, false, rawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SRGGB10, FrameFormat::BayerRg10, false, rawMosaic},
                                PixelFormat{V4L2_PIX_FMT_MJPEG, FrameFormat::Jpeg, false, compressed},
                                PixelFormat{V4L2_PIX_FMT_JPEG, FrameFormat::Jpeg, false, compressed},
                                PixelFormat{V4L2_PIX_FMT_NV12, FrameFormat::Nv12, false, quarterColour},
                                PixelFormat{V4L2_PIX_FMT_NV21, FrameFormat::Nv21, false, quarterColour},
                                PixelFormat{V4L2_PIX_FMT_YUV420, FrameFormat::Yu12, false, quarterColour},
                                PixelFormat{V4L2_PIX_FMT_YVU420, FrameFormat::Yv12, false, quarterColour},
                                PixelFormat{V4L2_PIX_FMT_NV12M, FrameFormat::Nv12, true, quarterColour},
                                PixelFormat{V4L2_PIX_FMT_NV21M, FrameFormat::Nv21, true, quarterColour},
                                PixelFormat{V4L2_PIX_FMT_YUV420M, FrameFormat::Yu12, true, quarterColour},
                                PixelFormat{V4L2_PIX_FMT_YVU420M, FrameFormat::Yv12, true, quarterColour},
                                PixelFormat{V4L2_PIX_FMT_YUYV, FrameFormat::Yuyv, false, halfColour},
                                PixelFormat{V4L2_PIX_FMT_UYVY, FrameFormat::Uyvy, false, halfColour},
                                PixelFormat{V4L2_PIX_FMT_YVYU, FrameFormat::Yvyu, false, halfColour},
                                PixelFormat{V4L2_PIX_FMT_VYUY, FrameFormat::Vyuy, false, halfColour},
                                PixelFormat{V4L2_PIX_FMT_NV16, FrameFormat::Nv16, false, halfColour},
                                PixelFormat{V4L2_PIX_FMT_NV16M, FrameFormat::Nv16, true, halfColour},
                                PixelFormat{V4L2_PIX_FMT_RGB24, FrameFormat::Rgb24, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_BGR24, FrameFormat::Bgr24, false, fullColour},
                                // The names do not tell the order of the bytes; the kernel's tables of formats do.
                                PixelFormat{V4L2_PIX_FMT_RGB32, FrameFormat::Xrgb32, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_ARGB32, FrameFormat::Xrgb32, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_XRGB32, FrameFormat::Xrgb32, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_BGR32, FrameFormat::Bgrx32, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_ABGR32, FrameFormat::Bgrx32, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_XBGR32, FrameFormat::Bgrx32, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_RGBA32, FrameFormat::Rgbx32, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_RGBX32, FrameFormat::Rgbx32, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_BGRA32, FrameFormat::Xbgr32, false, fullColour},
                                PixelFormat{V4L2_PIX_FMT_BGRX32, FrameFormat::Xbgr32, false, fullColour}};

constexpr std::array depthFormats = {V4L2_PIX_FMT_Z16, V4L2_PIX_FMT_INZI, V4L2_PIX_FMT_CNF4,
                                     v4l2_fourcc('I', 'N', 'V', 'Z')};

constexpr std::array infraredFormats = {V4L2_PIX_FMT_GREY,
                                        V4L2_PIX_FMT_Y4,
                                        V4L2_PIX_FMT_Y6,
                                        V4L2_PIX_FMT_Y10,
                                        V4L2_PIX_FMT_Y12,
                                        V4L2_PIX_FMT_Y14,
                                        V4L2_PIX_FMT_Y16,
                                        V4L2_PIX_FMT_Y16_BE,
                                        V4L2_PIX_FMT_Y10BPACK,
                                        V4L2_PIX_FMT_Y10P,
                                        V4L2_PIX_FMT_Y8I,
                                        V4L2_PIX_FMT_Y12I,
                                        v4l2_fourcc('I', 'N', 'V', 'I'),
                                        v4l2_fourcc('I', 'N', 'R', 'I')};

template <typename Codes> bool contains(const Codes& codes, std::uint32_t code) {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

} // namespace

const PixelFormat* findPixelFormat(std::uint32_t code) {
    const auto found =
        std::find_if(formats.begin(), formats.end(), [&](const PixelFormat& format) { return format.code == code; });
    return found != formats.end() ? &*found : nullptr;
}

std::string pixelFormatName(std::uint32_t code) {
    std::string name;
    for (int shift = 0; shift < 32; shift += 8) {
        const char character = static_cast<char>(code >> shift & 0x7F);
        name += character >= ' ' && character <= '~' ? character : '?';
    }
    name.erase(name.find_last_not_of(' ') + 1);
    return name;
}

MediaFrameSourceKind kindOfPixelFormat(std::uint32_t code) {
    if (contains(depthFormats, code))
        return MediaFrameSourceKind::Depth;
    return contains(infraredFormats, code) ? MediaFrameSourceKind::Infrared : MediaFrameSourceKind::Color;
}

bool isRgb(Imaging::FrameFormat format) { return format >= FrameFormat::Rgb24 && format <= FrameFormat::Xbgr32; }

} // namespace Platform::V4l2
