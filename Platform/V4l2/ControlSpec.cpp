#include "Platform/V4l2/ControlSpec.h"

#include <linux/v4l2-controls.h>

namespace Platform::V4l2 {

const ControlSpec& exposureSpec() {
    // Aperture priority is what UVC cameras call automatic; in shutter priority the time is set by hand.
    static const ControlSpec spec{{V4L2_CID_EXPOSURE_ABSOLUTE, V4L2_CID_EXPOSURE},
                                  {V4L2_CID_EXPOSURE_AUTO},
                                  {V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY},
                                  {V4L2_EXPOSURE_MANUAL, V4L2_EXPOSURE_SHUTTER_PRIORITY},
                                  true,
                                  {}};
    return spec;
}

const ControlSpec& focusSpec() {
    // A voice coil crosses its whole range in less.
    static const ControlSpec spec{{V4L2_CID_FOCUS_ABSOLUTE},     {V4L2_CID_FOCUS_AUTO}, {1}, {0}, false,
                                  std::chrono::milliseconds(500)};
    return spec;
}

const ControlSpec& whiteBalanceSpec() {
    static const ControlSpec spec{
        {V4L2_CID_WHITE_BALANCE_TEMPERATURE}, {V4L2_CID_AUTO_WHITE_BALANCE}, {1}, {0}, false, {}};
    return spec;
}

const ControlSpec& brightnessSpec() {
    static const ControlSpec spec{{V4L2_CID_BRIGHTNESS}, {V4L2_CID_AUTOBRIGHTNESS}, {1}, {0}, false, {}};
    return spec;
}

const ControlSpec& contrastSpec() {
    static const ControlSpec spec{{V4L2_CID_CONTRAST}, {}, {1}, {0}, false, {}};
    return spec;
}

} // namespace Platform::V4l2
