#include "Tests/Platform/V4l2/FakeKernel/FakeDevice.h"

#include <algorithm>

namespace Platform::V4l2 {

FakeDevice usbCamera() {
    FakeDevice device;
    device.formats = {{V4L2_PIX_FMT_YUYV, {{16, 8, {{1, 30}, {1, 15}}}, {32, 16, {{1, 10}}}}},
                      {V4L2_PIX_FMT_MJPEG, {{32, 16, {{1, 30}}}}},
                      {V4L2_PIX_FMT_H264, {{64, 64, {{1, 30}}}}}};
    device.controls[V4L2_CID_EXPOSURE_AUTO] = {V4L2_CTRL_TYPE_MENU, 0, 3, 1, 3, 0, {{1, 0}, {3, 0}}};
    device.controls[V4L2_CID_EXPOSURE_ABSOLUTE] = {V4L2_CTRL_TYPE_INTEGER, 3, 2047, 1, 250};
    device.controls[V4L2_CID_FOCUS_AUTO] = {V4L2_CTRL_TYPE_BOOLEAN, 0, 1, 1, 1};
    device.controls[V4L2_CID_FOCUS_ABSOLUTE] = {V4L2_CTRL_TYPE_INTEGER, 0, 250, 5, 40};
    device.controls[V4L2_CID_AUTO_WHITE_BALANCE] = {V4L2_CTRL_TYPE_BOOLEAN, 0, 1, 1, 1};
    device.controls[V4L2_CID_WHITE_BALANCE_TEMPERATURE] = {V4L2_CTRL_TYPE_INTEGER, 2800, 6500, 10, 4000};
    device.controls[V4L2_CID_BRIGHTNESS] = {V4L2_CTRL_TYPE_INTEGER, -64, 64, 1, 0};
    device.controls[V4L2_CID_CONTRAST] = {V4L2_CTRL_TYPE_INTEGER, 0, 95, 1, 32};
    return device;
}

std::uint8_t lumaOfExposure(std::int32_t units) {
    int stops = 0;
    for (; units > 1; units /= 2)
        ++stops;
    return static_cast<std::uint8_t>(16 + std::min(stops * 15, 219));
}

} // namespace Platform::V4l2
