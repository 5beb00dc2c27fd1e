#include "Platform/V4l2/Controls/ControlMapping.h"

#include <linux/v4l2-controls.h>

namespace Platform::V4l2 {

const ControlMapping& exposureMapping() {
    // Aperture priority is what UVC cameras call automatic; in shutter priority the time is set by hand.
    static const ControlMapping mapping{{V4L2_CID_EXPOSURE_ABSOLUTE, V4L2_CID_EXPOSURE},
                                        {V4L2_CID_EXPOSURE_AUTO},
                                        {V4L2_EXPOSURE_AUTO, V4L2_EXPOSURE_APERTURE_PRIORITY},
                                        {V4L2_EXPOSURE_MANUAL, V4L2_EXPOSURE_SHUTTER_PRIORITY},
                                        true,
                                        {}};
    return mapping;
}

const ControlMapping& focusMapping() {
    // A voice coil crosses its whole range in less.
    static const ControlMapping mapping{{V4L2_CID_FOCUS_ABSOLUTE},     {V4L2_CID_FOCUS_AUTO}, {1}, {0}, false,
                                        std::chrono::milliseconds(500)};
    return mapping;
}

const ControlMapping& whiteBalanceMapping() {
    static const ControlMapping mapping{
        {V4L2_CID_WHITE_BALANCE_TEMPERATURE}, {V4L2_CID_AUTO_WHITE_BALANCE}, {1}, {0}, false, {}};
    return mapping;
}

const ControlMapping& brightnessMapping() {
    static const ControlMapping mapping{{V4L2_CID_BRIGHTNESS}, {V4L2_CID_AUTOBRIGHTNESS}, {1}, {0}, false, {}};
    return mapping;
}

const ControlMapping& contrastMapping() {
    static const ControlMapping mapping{{V4L2_CID_CONTRAST}, {}, {1}, {0}, false, {}};
    return mapping;
}

} // namespace Platform::V4l2
