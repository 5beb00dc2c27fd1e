#include "Platform/V4l2/Discovery/PixelFormats.h"

#include <linux/videodev2.h>

#include <algorithm>
#include <array>

namespace Platform::V4l2 {
namespace {

using Imaging::FrameFormat;

// What a still of the format keeps of the scene.
constexpr int BrightnessAlone = 0;
constexpr int RawMosaic = 1;
constexpr int Compressed = 2;
constexpr int QuarterColour = 3;
constexpr int HalfColour = 4;
constexpr int FullColour = 5;

constexpr std::array Formats = {PixelFormat{V4L2_PIX_FMT_GREY, FrameFormat::Grey, false, BrightnessAlone},
                                PixelFormat{V4L2_PIX_FMT_SBGGR8, FrameFormat::BayerBg8, false, RawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SGBRG8, FrameFormat::BayerGb8, false, RawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SGRBG8, FrameFormat::BayerGr8, false, RawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SRGGB8, FrameFormat::BayerRg8, false, RawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SBGGR10, FrameFormat::BayerBg10, false, RawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SGBRG10, FrameFormat::BayerGb10, false, RawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SGRBG10, FrameFormat::BayerGr10, false, RawMosaic},
                                PixelFormat{V4L2_PIX_FMT_SRGGB10, FrameFormat::BayerRg10, false, RawMosaic},
                                PixelFormat{V4L2_PIX_FMT_MJPEG, FrameFormat::Jpeg, false, Compressed},
                                PixelFormat{V4L2_PIX_FMT_JPEG, FrameFormat::Jpeg, false, Compressed},
                                PixelFormat{V4L2_PIX_FMT_NV12, FrameFormat::Nv12, false, QuarterColour},
                                PixelFormat{V4L2_PIX_FMT_NV21, FrameFormat::Nv21, false, QuarterColour},
                                PixelFormat{V4L2_PIX_FMT_YUV420, FrameFormat::Yu12, false, QuarterColour},
                                PixelFormat{V4L2_PIX_FMT_YVU420, FrameFormat::Yv12, false, QuarterColour},
                                PixelFormat{V4L2_PIX_FMT_NV12M, FrameFormat::Nv12, true, QuarterColour},
                                PixelFormat{V4L2_PIX_FMT_NV21M, FrameFormat::Nv21, true, QuarterColour},
                                PixelFormat{V4L2_PIX_FMT_YUV420M, FrameFormat::Yu12, true, QuarterColour},
                                PixelFormat{V4L2_PIX_FMT_YVU420M, FrameFormat::Yv12, true, QuarterColour},
                                PixelFormat{V4L2_PIX_FMT_YUYV, FrameFormat::Yuyv, false, HalfColour},
                                PixelFormat{V4L2_PIX_FMT_UYVY, FrameFormat::Uyvy, false, HalfColour},
                                PixelFormat{V4L2_PIX_FMT_YVYU, FrameFormat::Yvyu, false, HalfColour},
                                PixelFormat{V4L2_PIX_FMT_VYUY, FrameFormat::Vyuy, false, HalfColour},
                                PixelFormat{V4L2_PIX_FMT_NV16, FrameFormat::Nv16, false, HalfColour},
                                PixelFormat{V4L2_PIX_FMT_NV16M, FrameFormat::Nv16, true, HalfColour},
                                PixelFormat{V4L2_PIX_FMT_RGB24, FrameFormat::Rgb24, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_BGR24, FrameFormat::Bgr24, false, FullColour},
                                // The names do not tell the order of the bytes; the kernel's tables of formats do.
                                PixelFormat{V4L2_PIX_FMT_RGB32, FrameFormat::Xrgb32, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_ARGB32, FrameFormat::Xrgb32, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_XRGB32, FrameFormat::Xrgb32, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_BGR32, FrameFormat::Bgrx32, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_ABGR32, FrameFormat::Bgrx32, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_XBGR32, FrameFormat::Bgrx32, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_RGBA32, FrameFormat::Rgbx32, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_RGBX32, FrameFormat::Rgbx32, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_BGRA32, FrameFormat::Xbgr32, false, FullColour},
                                PixelFormat{V4L2_PIX_FMT_BGRX32, FrameFormat::Xbgr32, false, FullColour}};

constexpr std::array DepthFormats = {V4L2_PIX_FMT_Z16, V4L2_PIX_FMT_INZI, V4L2_PIX_FMT_CNF4,
                                     v4l2_fourcc('I', 'N', 'V', 'Z')};

constexpr std::array InfraredFormats = {V4L2_PIX_FMT_GREY,
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
        std::find_if(Formats.begin(), Formats.end(), [&](const PixelFormat& format) { return format.code == code; });
    return found != Formats.end() ? &*found : nullptr;
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
    if (contains(DepthFormats, code))
        return MediaFrameSourceKind::Depth;
    return contains(InfraredFormats, code) ? MediaFrameSourceKind::Infrared : MediaFrameSourceKind::Color;
}

bool isRgb(Imaging::FrameFormat format) { return format >= FrameFormat::Rgb24 && format <= FrameFormat::Xbgr32; }

} // namespace Platform::V4l2
